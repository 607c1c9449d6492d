// Must fail the check: IOKit has no IOServiceGetMatchingServis.
// expect-error: undeclared identifier 'IOServiceGetMatchingServis'
#include <IOKit/IOKitLib.h>

io_service_t smc() {
    return IOServiceGetMatchingServis(kIOMainPortDefault, IOServiceMatching("AppleSMC"));
}
