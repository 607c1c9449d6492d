#!/bin/sh
# Writes bytes that are not UTF-8.
printf "\377\376 broken\n" >&2
exit 1
