#include "lab/findings/findings.h"

namespace lab {

const std::vector<FindingKind>& FindingKinds() {
  using enum Severity;
  static const std::vector<FindingKind> kKinds{
      {"migration-stopped", "The update stopped before it was done",
       "Documents are missing, so the household's Wi-Fi does not come up as it was; later runs may be "
       "blocked.",
       "The reason tells what to mend on the device; remove the documents that were written, then run again.",
       Breaks},
      {"blocked-by-earlier-run", "An earlier run that broke off blocks this one",
       "Some of the five documents are missing and no later run writes them: the household keeps a half "
       "Wi-Fi.",
       "Remove the documents that are there, put the archived files back, then run again.", Breaks},
      {"country-unknown", "The country is unknown, so the US counts",
       "Channels and power follow the rules of the US, which may be unlawful at home; devices on channels 12 "
       "and "
       "13 fall off.",
       "Set the country on the device.", Breaks},
      {"mesh-role-unreadable", "The mesh role cannot be read, so the device stands alone",
       "The nodes of a mesh lose their router.", "Restore the mesh file, or set the mesh up anew.", Breaks},
      {"topology-unreadable", "The topology cannot be read, so the device is a router",
       "A device that was a bridge or a repeater opens a network of its own beside the household's.",
       "Set the topology on the device; correct net_topology before an upgrade is repeated.", Breaks},
      {"archive-stopped", "The archive stopped at a legacy file that is missing",
       "All documents are written and the Wi-Fi works, but the update reports a failure, and legacy files "
       "with "
       "the household's secrets stay where they were.",
       "Nothing for the Wi-Fi; move or remove the legacy files that stayed.", Changes},
      {"usb3-unreadable", "The USB 3 switch cannot be read, so USB 3 is on",
       "Where it was off because it disturbs 2.4 GHz, that radio gets worse.",
       "Restore the boot environment and its /etc/fw_env.config, then switch USB 3 off again.", Changes},
      {"backhaul-unreadable", "The backhaul's band cannot be read, so it is the usual one",
       "A mesh whose backhaul was swapped to the other 5 GHz band may lose its nodes until they follow.",
       "Set the backhaul band anew.", Changes},
  };
  return kKinds;
}

}  // namespace lab
