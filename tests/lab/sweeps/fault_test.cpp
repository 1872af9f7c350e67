#include "lab/sweeps/fault.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace lab::sweeps {
namespace {

using ::testing::ElementsAre;

Fault ReadError() {
  Fault fault;
  fault.call = "read";
  fault.ordinal = 12;
  fault.error = "EIO";
  return fault;
}

Fault ShortWrite() {
  Fault fault;
  fault.kind = Fault::Kind::ShortTransfer;
  fault.call = "write";
  fault.ordinal = 3;
  fault.bytes = 1;
  return fault;
}

Fault NoMemory() {
  Fault fault;
  fault.kind = Fault::Kind::NoMemory;
  fault.call = "memory";
  fault.ordinal = 140;
  fault.error = "refused";
  return fault;
}

TEST(Fault, HasANameToAskForItAgain) {
  EXPECT_EQ(NameOf(ReadError()), "read:12:EIO");
  EXPECT_EQ(NameOf(ShortWrite()), "write:3:short=1");
}

TEST(Fault, MayLast) {
  Fault fault = ReadError();
  fault.lasting = true;
  EXPECT_EQ(NameOf(fault), "read:12+:EIO");
  EXPECT_EQ(KindOf(fault), "read for good");
  EXPECT_THAT(InjectionOf(fault), ElementsAre("-e", "inject=read:error=EIO:when=12+"));
}

TEST(Fault, AWriteMayTakeNothing) {
  Fault fault = ShortWrite();
  fault.kind = Fault::Kind::Nothing;
  EXPECT_EQ(NameOf(fault), "write:3:nothing");
  EXPECT_EQ(KindOf(fault), "write nothing");
  EXPECT_TRUE(IsOfStrace(fault));
  EXPECT_THAT(InjectionOf(fault), ElementsAre("-e", "inject=write:retval=0:when=3"));
}

TEST(Fault, OnlyErrorsAndNothingAreOfStrace) {
  EXPECT_TRUE(IsOfStrace(ReadError()));
  EXPECT_FALSE(IsOfStrace(ShortWrite()));
  EXPECT_THROW(InjectionOf(NoMemory()), std::logic_error);
}

TEST(Fault, NoMemoryIsGivenByTamper) {
  EXPECT_EQ(NameOf(NoMemory()), "memory:140:refused");
  EXPECT_THAT(WrapperOf(NoMemory(), "/usr/bin/strace", "/tmp/tamper", "/tmp/record"),
              ElementsAre("/tmp/tamper", "refuse-memory", "140"));
}

TEST(Fault, IsCountedByCallAndError) {
  EXPECT_EQ(KindOf(NoMemory()), "memory refused");
  EXPECT_EQ(KindOf(ReadError()), "read EIO");
  EXPECT_EQ(KindOf(ShortWrite()), "write short");
}

TEST(Fault, ErrorsComeFromStrace) {
  EXPECT_THAT(WrapperOf(ReadError(), "/usr/bin/strace", "/tmp/tamper", "/tmp/record"),
              ElementsAre("/usr/bin/strace", "-f", "-qq", "-xx", "-s", "4096", "--seccomp-bpf", "-e",
                          "trace=read", "-e", "inject=read:error=EIO:when=12", "-o", "/tmp/record"));
}

TEST(Fault, ShortTransfersComeFromTamper) {
  EXPECT_THAT(WrapperOf(ShortWrite(), "/usr/bin/strace", "/tmp/tamper", "/tmp/record"),
              ElementsAre("/tmp/tamper", "shorten", "write", "3", "1"));
  Fault all = ShortWrite();
  all.kind = Fault::Kind::ShortTransfers;
  all.ordinal = 117;
  EXPECT_THAT(WrapperOf(all, "/usr/bin/strace", "/tmp/tamper", "/tmp/record"),
              ElementsAre("/tmp/tamper", "shorten-from", "117", "1"));
}

}  // namespace
}  // namespace lab::sweeps
