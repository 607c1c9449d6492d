// links: velmora_metrics
// expect-error: app/core/shell.hpp: No such file or directory
// The readers know nothing of the application that shows their figures.
#include "app/core/shell.hpp"
