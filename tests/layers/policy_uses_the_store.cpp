// links: velmora_policy
// expect-error: store/settings.hpp: No such file or directory
// The decisions read no files: the policy layer sees nothing above itself.
#include "store/settings.hpp"
