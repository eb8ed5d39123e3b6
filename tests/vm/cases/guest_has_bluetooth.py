# SPDX-License-Identifier: Apache-2.0
# Shows: the guest is what the other cases need: two controllers, both with power, known to bluetoothd
# Guest: bluetooth
from vm import bus
from vm.checks import equal
from vm.hci import Management

with Management() as management:
    equal(management.indexes(), [0, 1], "controllers")
equal(sorted(bus.objects("org.bluez.Adapter1")), ["/org/bluez/hci0", "/org/bluez/hci1"], "adapters of bluetoothd")
