// A kernel module that stands in for the device's kernel: /proc/sys/kernel/kelp_mac_address0 and so on, as
// many as it is given in addresses=TEXT,TEXT...
#include <linux/module.h>
#include <linux/string.h>
#include <linux/sysctl.h>
#include <linux/version.h>

#define MOST 6

static char* addresses[MOST];
static int count;
module_param_array(addresses, charp, &count, 0444);

static const char* const names[MOST] = {
    "kelp_mac_address0", "kelp_mac_address1", "kelp_mac_address2",
    "kelp_mac_address3", "kelp_mac_address4", "kelp_mac_address5",
};
static struct ctl_table entries[MOST + 1];  // older kernels want an empty one at the end
static struct ctl_table_header* header;

static int __init begin(void) {
  int i;
  for (i = 0; i < count; ++i) {
    entries[i].procname = names[i];
    entries[i].data = addresses[i];
    entries[i].maxlen = strlen(addresses[i]) + 1;
    entries[i].mode = 0444;
    entries[i].proc_handler = proc_dostring;
  }
#if LINUX_VERSION_CODE >= KERNEL_VERSION(6, 6, 0)
  header = register_sysctl_sz("kernel", entries, count);
#else
  header = register_sysctl("kernel", entries);
#endif
  return header ? 0 : -ENOMEM;
}

static void __exit end(void) {
  unregister_sysctl_table(header);
}

module_init(begin);
module_exit(end);
MODULE_LICENSE("GPL");
MODULE_DESCRIPTION("The device's kernel entries of its interfaces' addresses");
