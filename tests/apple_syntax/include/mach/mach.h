// Declarations for the Apple-code syntax check only: the Mach host and VM calls this project
// makes, written from Apple's public documentation. Not a usable SDK header.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned int natural_t;
typedef int integer_t;
typedef int kern_return_t;
typedef natural_t mach_port_t;
typedef natural_t mach_msg_type_number_t;
typedef mach_port_t host_t;
typedef mach_port_t task_t;
typedef mach_port_t task_port_t;
typedef mach_port_t vm_map_t;
typedef uintptr_t vm_address_t;
typedef uintptr_t vm_size_t;
typedef integer_t host_flavor_t;
typedef int processor_flavor_t;
typedef integer_t* host_info_t;
typedef integer_t* host_info64_t;
typedef integer_t* processor_info_array_t;

#define KERN_SUCCESS 0

#define CPU_STATE_MAX 4
#define CPU_STATE_USER 0
#define CPU_STATE_SYSTEM 1
#define CPU_STATE_IDLE 2
#define CPU_STATE_NICE 3

#define HOST_CPU_LOAD_INFO 3
#define HOST_VM_INFO64 4
#define PROCESSOR_CPU_LOAD_INFO 2

typedef struct {
    natural_t cpu_ticks[CPU_STATE_MAX];
} host_cpu_load_info_data_t;
#define HOST_CPU_LOAD_INFO_COUNT \
    ((mach_msg_type_number_t)(sizeof(host_cpu_load_info_data_t) / sizeof(integer_t)))

typedef struct {
    natural_t free_count;
    natural_t active_count;
    natural_t inactive_count;
    natural_t wire_count;
    uint64_t zero_fill_count;
    uint64_t reactivations;
    uint64_t pageins;
    uint64_t pageouts;
    uint64_t faults;
    uint64_t cow_faults;
    uint64_t lookups;
    uint64_t hits;
    uint64_t purges;
    natural_t purgeable_count;
    natural_t speculative_count;
    uint64_t decompressions;
    uint64_t compressions;
    uint64_t swapins;
    uint64_t swapouts;
    natural_t compressor_page_count;
    natural_t throttled_count;
    natural_t external_page_count;
    natural_t internal_page_count;
    uint64_t total_uncompressed_pages_in_compressor;
} vm_statistics64_data_t;
#define HOST_VM_INFO64_COUNT \
    ((mach_msg_type_number_t)(sizeof(vm_statistics64_data_t) / sizeof(integer_t)))

host_t mach_host_self(void);
// A macro over a global in the real header; a function here.
task_t mach_task_self(void);
kern_return_t host_statistics(host_t host_priv, host_flavor_t flavor, host_info_t host_info_out,
                              mach_msg_type_number_t* host_info_outCnt);
kern_return_t host_statistics64(host_t host_priv, host_flavor_t flavor,
                                host_info64_t host_info64_out,
                                mach_msg_type_number_t* host_info64_outCnt);
kern_return_t host_processor_info(host_t host, processor_flavor_t flavor,
                                  natural_t* out_processor_count,
                                  processor_info_array_t* out_processor_info,
                                  mach_msg_type_number_t* out_processor_infoCnt);
kern_return_t vm_deallocate(vm_map_t target_task, vm_address_t address, vm_size_t size);

#ifdef __cplusplus
}
#endif
