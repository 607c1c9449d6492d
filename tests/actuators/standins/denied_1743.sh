#!/bin/sh
# The Automation refusal, with leading blanks and a line end around it.
printf "  execution error: Not authorized to send Apple events to System Events. (-1743)\n" >&2
exit 1
