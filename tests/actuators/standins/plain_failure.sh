#!/bin/sh
# An ordinary script error with surrounding blanks.
printf "\n  execution error: System Events got an error: Connection is invalid. (-609)  \n" >&2
exit 1
