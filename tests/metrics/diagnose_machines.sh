#!/bin/bash
# Runs `--diagnose` of the real executable against fixture machines through VELMORA_ROOT and
# checks what it tells the user: which sensor stands in for the CPU, every power source, every
# battery, and the live JSON the pages receive.
set -u
exe=$1
fixtures=$2
failures=0

diagnose() {
    HOME=$(mktemp -d) VELMORA_ROOT="$fixtures/$1" "$exe" --diagnose
}

# expect MACHINE EXTENDED-REGEX: a line of the report must match.
expect() {
    local machine=$1 pattern=$2
    if ! grep -Eq -- "$pattern" <<<"${reports[$machine]}"; then
        echo "FAIL $machine: no line matches: $pattern" >&2
        failures=$((failures + 1))
    fi
}

# expect_json MACHINE TEXT: the live JSON holds this exact text.
expect_json() {
    local machine=$1 text=$2
    if ! grep -A1 '^Live JSON:' <<<"${reports[$machine]}" | grep -Fq -- "$text"; then
        echo "FAIL $machine: the live JSON lacks: $text" >&2
        failures=$((failures + 1))
    fi
}

# refuse MACHINE EXTENDED-REGEX: no line may match.
refuse() {
    local machine=$1 pattern=$2
    if grep -Eq -- "$pattern" <<<"${reports[$machine]}"; then
        echo "FAIL $machine: a line matches what must not be there: $pattern" >&2
        failures=$((failures + 1))
    fi
}

declare -A reports
for machine in arm_board old_laptop gpu_desktop thinkpad_dual_ac thinkpad_dual_discharging \
               container; do
    if ! reports[$machine]=$(diagnose "$machine"); then
        echo "FAIL $machine: --diagnose exited with an error" >&2
        failures=$((failures + 1))
    fi
done

expect arm_board '^CPU temperature +63\.5 °C +REAL live +.*/sys/class/thermal/thermal_zone0/temp \(a CPU/SoC thermal zone: no CPU sensor found\)$'
expect arm_board '^GPU temperature +58\.2 °C +REAL live +.*/thermal_zone1/temp$'
expect arm_board '^Thermal state +Nominal '
expect_json arm_board '{"name":"ddr-thermal","source":"thermal ddr-thermal","value":"51°C"}'

expect old_laptop '^CPU temperature +61\.0 °C +REAL live +.*/thermal_zone1/temp \(the ACPI thermal zone: no CPU sensor or CPU/SoC zone found'
expect old_laptop '^Battery BAT0 +97% Unknown +REAL live +power_supply BAT0$'
expect_json old_laptop '"state":"On AC"'

expect gpu_desktop '^Power +32\.1 W GPU power +REAL live +.*/sys/class/hwmon/hwmon2/power1_average$'
expect gpu_desktop '^Power source +32\.1 W GPU power +REAL live +hwmon amdgpu PPT: .*/hwmon2/power1_average$'
expect_json gpu_desktop '"powerList":[{"label":"GPU power","source":"hwmon amdgpu PPT","value":"32.1 W"}]'
expect_json gpu_desktop '{"name":"acpitz temp1","source":"hwmon acpitz temp1","value":"28°C"}'
refuse gpu_desktop '"thermal acpitz'

expect thinkpad_dual_ac '^Battery BAT0 +80% Not charging +REAL live +power_supply BAT0$'
expect thinkpad_dual_ac '^Battery BAT1 +100% Full +REAL live +power_supply BAT1$'
expect thinkpad_dual_ac '^Sensors: .*; battery: BAT0, BAT1; AC: AC;'
expect_json thinkpad_dual_ac '"battery":{"fill":0.95,"ok":true,"stage":"normal","state":"On AC","value":"95%"}'

expect thinkpad_dual_discharging '^Battery BAT1 +41% Discharging +REAL live +power_supply BAT1$'
expect thinkpad_dual_discharging '^Power +9\.8 W Battery discharge +REAL live +.*/power_supply/BAT1/power_now$'
expect thinkpad_dual_discharging '^Power source +9\.8 W Battery discharge +REAL live +power_supply BAT1: .*/BAT1/power_now$'
expect_json thinkpad_dual_discharging '"state":"On battery","value":"51%"'

expect container '^CPU busy +n/a +REAL absent '
expect container '^Load average +n/a +REAL absent '
expect container '^Memory used +n/a +REAL absent '
expect_json container '"ram":{"fill":0.0,"ok":false,"stage":"none","value":"n/a"}'
expect_json container '"load":{"fill":0.0,"ok":false,"stage":"none","value":"n/a"}'

# A fixture machine has no processes of its own: none are listed, and the host's never are.
expect container '^Busiest processes between the two samples \([0-9.]+ s\):$'
expect container '^  none measured$'
refuse container '\(pid [0-9]+\)'

if ((failures > 0)); then
    echo "$failures check(s) failed" >&2
    exit 1
fi
echo "all --diagnose checks passed"
