#pragma once

/// Whether the boot environment switches USB 3 off: its variable "usb3_disable" absent, empty or "0" gives 0,
/// any other value 1. Gives -1 when the environment that "/etc/fw_env.config" describes cannot be opened.
///
/// A configuration that names a FIFO, or a size below 6 bytes or above 16 MiB, counts as one that cannot be
/// opened.
///
/// Asked anew at every call. Takes the lock file "/var/lock/fw_printenv.lock", as every tool of the boot
/// environment does, and leaves it there.
int KELPUSBGetUSB3DisableUbootEnv();
