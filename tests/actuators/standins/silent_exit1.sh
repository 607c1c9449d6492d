#!/bin/sh
# Fails without a word.
exit 1
