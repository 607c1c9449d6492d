#!/bin/sh
# Leaves a trace in $VELMORA_TEST_MARK that it ran.
echo ran > "$VELMORA_TEST_MARK"
exit 0
