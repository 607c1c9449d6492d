#!/bin/sh
# Waits, and on SIGTERM records in $VELMORA_TEST_MARK that it was asked to terminate.
trap 'kill "$sleeper" 2>/dev/null; echo terminated > "$VELMORA_TEST_MARK"; exit 0' TERM
sleep 30 &
sleeper=$!
wait
