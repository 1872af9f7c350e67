#include "lab/sweeps/fault.h"

namespace lab::sweeps {
namespace {

bool IsShort(const Fault& fault) {
  return fault.kind == Fault::Kind::ShortTransfer || fault.kind == Fault::Kind::ShortTransfers;
}

}  // namespace

std::string NameOf(const Fault& fault) {
  const std::string call = fault.call + ":" + std::to_string(fault.ordinal) + ":";
  return call + (IsShort(fault) ? "short=" + std::to_string(fault.bytes) : fault.error);
}

std::string KindOf(const Fault& fault) {
  return fault.call + " " + (IsShort(fault) ? "short" : fault.error);
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
    case Fault::Kind::NoMemory:
      return {tamper, "refuse-memory", ordinal};
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
