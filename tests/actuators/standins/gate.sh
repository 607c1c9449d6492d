#!/bin/sh
# Blocks until a line is written to the FIFO named in $VELMORA_TEST_GATE, then succeeds.
read -r line < "$VELMORA_TEST_GATE"
exit 0
