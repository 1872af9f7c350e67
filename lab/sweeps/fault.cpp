#include "lab/sweeps/fault.h"

namespace lab::sweeps {

std::string NameOf(const Fault& fault) {
  const std::string place = fault.call + ":" + std::to_string(fault.ordinal) + ":";
  return place + (fault.kind == Fault::Kind::Error ? fault.error : "short=" + std::to_string(fault.bytes));
}

std::string KindOf(const Fault& fault) {
  return fault.call + " " + (fault.kind == Fault::Kind::Error ? fault.error : "short");
}

std::vector<std::string> WrapperOf(const Fault& fault, const std::string& strace, const std::string& tamper,
                                   const std::string& record) {
  const std::string ordinal = std::to_string(fault.ordinal);
  const std::string bytes = std::to_string(fault.bytes);
  switch (fault.kind) {
    case Fault::Kind::ShortTransfer:
      return {tamper, "shorten", fault.call, ordinal, bytes};
    case Fault::Kind::ShortTransfers:
      return {tamper, "shorten-from", ordinal, bytes};
    case Fault::Kind::Error:
      break;
  }
  // Only the one call stops the program: the others run at full speed.
  return {strace,
          "-f",
          "-qq",
          "-xx",
          "-s",
          "4096",
          "--seccomp-bpf",
          "-e",
          "trace=" + fault.call,
          "-e",
          "inject=" + fault.call + ":error=" + fault.error + ":when=" + ordinal,
          "-o",
          record};
}

}  // namespace lab::sweeps
