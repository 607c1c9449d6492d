#!/bin/sh
# The refusal phrase in capital letters and without an error number.
echo "NOT ALLOWED TO SEND APPLE EVENTS" >&2
exit 1
