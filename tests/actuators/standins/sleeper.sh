#!/bin/sh
# Prints a refusal it never gets the chance to deliver, then outlives any short time-out.
echo "execution error: Not authorized to send Apple events to System Events. (-1743)" >&2
exec sleep 30
