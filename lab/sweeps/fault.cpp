#include "lab/sweeps/fault.h"

#include <stdexcept>

namespace lab::sweeps {
namespace {

using Kind = Fault::Kind;

std::string WhatHappens(const Fault& fault) {
  switch (fault.kind) {
    case Kind::Nothing:
      return "nothing";
    case Kind::ShortTransfer:
    case Kind::ShortTransfers:
      return "short";
    case Kind::Error:
    case Kind::NoMemory:
      break;
  }
  return fault.error;
}

bool IsShort(const Fault& fault) {
  return fault.kind == Kind::ShortTransfer || fault.kind == Kind::ShortTransfers;
}

}  // namespace

std::string NameOf(const Fault& fault) {
  const std::string call = fault.call + ":" + std::to_string(fault.ordinal) + (fault.lasting ? "+:" : ":");
  return call + WhatHappens(fault) + (IsShort(fault) ? "=" + std::to_string(fault.bytes) : "");
}

std::string KindOf(const Fault& fault) {
  return fault.call + " " + (fault.lasting ? "for good" : WhatHappens(fault));
}

bool IsOfStrace(const Fault& fault) {
  return fault.kind == Kind::Error || fault.kind == Kind::Nothing;
}

std::vector<std::string> InjectionOf(const Fault& fault) {
  if (!IsOfStrace(fault)) throw std::logic_error("not strace's: " + NameOf(fault));
  const std::string answer = fault.kind == Kind::Nothing ? "retval=0" : "error=" + fault.error;
  const std::string when = std::to_string(fault.ordinal) + (fault.lasting ? "+" : "");
  return {"-e", "inject=" + fault.call + ":" + answer + ":when=" + when};
}

std::vector<std::string> WrapperOf(const Fault& fault, const std::string& strace, const std::string& tamper,
                                   const std::string& record) {
  const std::string ordinal = std::to_string(fault.ordinal);
  const std::string bytes = std::to_string(fault.bytes);
  switch (fault.kind) {
    case Kind::ShortTransfer:
      return {tamper, "shorten", fault.call, ordinal, bytes};
    case Kind::ShortTransfers:
      return {tamper, "shorten-from", ordinal, bytes};
    case Kind::NoMemory:
      return {tamper, "refuse-memory", ordinal};
    case Kind::Error:
    case Kind::Nothing:
      break;
  }
  // Only the calls of this name stop the program: the others run at full speed.
  std::vector<std::string> wrapper{
      strace, "-f", "-qq", "-xx", "-s", "4096", "--seccomp-bpf", "-e", "trace=" + fault.call};
  for (const std::string& word : InjectionOf(fault)) wrapper.push_back(word);
  wrapper.insert(wrapper.end(), {"-o", record});
  return wrapper;
}

}  // namespace lab::sweeps
