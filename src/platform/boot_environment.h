#pragma once

/// Whether the boot environment switches USB 3 off: its variable "usb3_disable" absent, empty or "0" gives 0,
/// any other value 1. Gives -1 when the environment that "/etc/fw_env.config" describes cannot be opened.
///
/// A configuration counts as one that cannot be opened when it names a size below 6 bytes or above 16 MiB, or
/// what is no storage: anything but a regular file, a block device and the character devices of raw flash (a
/// major number of 90, or a name that begins with "/dev/ubi"), links followed. Nothing else is ever opened.
///
/// Asked anew at every call. Takes the lock file "/var/lock/fw_printenv.lock", as every tool of the boot
/// environment does, and leaves it there. A lock that another tool keeps, and a device that does not answer,
/// are waited for three seconds a call; then the environment counts as one that cannot be opened. Uses
/// SIGRTMIN for that, and leaves it as it was.
int KELPUSBGetUSB3DisableUbootEnv();
