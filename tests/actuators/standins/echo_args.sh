#!/bin/sh
# Reports how it was called: the argument count, then each argument on its own line.
echo "$#" >&2
for argument in "$@"; do echo "$argument" >&2; done
exit 1
