#include "lab/reports/report.h"

#include <gtest/gtest.h>
#include <syslog.h>

#include <csignal>
#include <sstream>

namespace lab {
namespace {

Entry File(const std::string& content, mode_t mode = 0644) {
  return {Entry::Kind::File, mode, content};
}

std::string Report(const RunResult& result) {
  std::ostringstream out;
  PrintReport(out, "updater --update-config 9000", result, Discretion({.show_secrets = true}, {}));
  return out.str();
}

TEST(PrintReport, TellsARunThatDidNothing) {
  RunResult result;
  result.status = 0;
  result.before = result.after = {{"/etc/a", File("1")}};
  EXPECT_EQ(Report(result),
            "Command:  updater --update-config 9000\n"
            "Ended:    exit status 0\n"
            "\n"
            "Console: nothing\n"
            "\n"
            "Files: as before\n"
            "\n"
            "System log: nothing\n");
}

TEST(PrintReport, TellsEverythingThatARunDid) {
  RunResult result;
  result.status = 1;
  result.out = "to out\n";
  result.err = "to err";
  result.log = {{LOG_WARNING, LOG_USER, "updater", "moving"}, {LOG_ERR, LOG_USER, "updater", "failed"}};
  result.before = {{"/etc/changed", File("1")}, {"/etc/gone", File("12")}, {"/etc/old", File("3")}};
  result.after = {{"/etc/archive", {Entry::Kind::Directory, 0755, ""}},
                  {"/etc/archive/old", File("3")},
                  {"/etc/changed", File("one")},
                  {"/etc/link", {Entry::Kind::Link, 0777, "/etc/changed"}},
                  {"/etc/network.json.router", File("{\n\t\"a\" : 1\n}\n", 0600)}};
  EXPECT_EQ(Report(result),
            "Command:  updater --update-config 9000\n"
            "Ended:    exit status 1\n"
            "\n"
            "Standard output:\n"
            "    to out\n"
            "\n"
            "Standard error:\n"
            "    to err\n"
            "\n"
            "Files:\n"
            "  written\n"
            "    /etc/archive/  (0755)\n"
            "    /etc/link -> /etc/changed\n"
            "    /etc/network.json.router  (0600, 13 bytes)\n"
            "  changed\n"
            "    /etc/changed  (0644, 3 bytes)\n"
            "  moved\n"
            "    /etc/old -> /etc/archive/old\n"
            "  removed\n"
            "    /etc/gone  (0644, 2 bytes)\n"
            "\n"
            "/etc/network.json.router:\n"
            "    {\n"
            "    \t\"a\" : 1\n"
            "    }\n"
            "\n"
            "System log:\n"
            "    warning updater: moving\n"
            "    err     updater: failed\n");
}

TEST(PrintReport, TellsKilledRuns) {
  RunResult result;
  result.signal = SIGSEGV;
  EXPECT_NE(Report(result).find("Ended:    killed by signal 11 (Segmentation fault)\n"), std::string::npos);
  result.signal = SIGKILL;
  result.timed_out = true;
  EXPECT_NE(Report(result).find("Ended:    killed, because it did not end in time\n"), std::string::npos);
}

TEST(PrintReport, SendsNothingDangerousToATerminal) {
  RunResult result;
  result.status = 0;
  result.err = "\x1b[2J";
  result.log = {{LOG_ERR, LOG_USER, "updater", "a\rb"}};
  result.after = {{"/\x1b]0;title", File("")}, {"/a.json", File("\x1b")}};
  EXPECT_EQ(Report(result).find_first_of("\x1b\r"), std::string::npos);
}

TEST(SeverityName, KnowsAllEight) {
  EXPECT_EQ(SeverityName(LOG_EMERG), "emerg");
  EXPECT_EQ(SeverityName(LOG_ERR), "err");
  EXPECT_EQ(SeverityName(LOG_WARNING), "warning");
  EXPECT_EQ(SeverityName(LOG_DEBUG), "debug");
}

TEST(PrintTree, ListsADeviceAndItsTexts) {
  std::ostringstream out;
  PrintTree(out,
            {{"/dev", {Entry::Kind::Directory, 0755, ""}},
             {"/dev/fifo", {Entry::Kind::Other, 0600, ""}},
             {"/etc", {Entry::Kind::Directory, 0755, ""}},
             {"/etc/empty", File("")},
             {"/etc/image", File(std::string("\0", 1))},
             {"/etc/large", File(std::string(20'000, 'x'))},
             {"/etc/link", {Entry::Kind::Link, 0777, "text"}},
             {"/etc/text", File("a=1\nb=2")}},
            Discretion({}, {}));
  EXPECT_EQ(out.str(),
            "/dev/fifo  (0600, no regular file)\n"
            "/etc/empty  (0644, 0 bytes)\n"
            "/etc/image  (0644, 1 bytes)\n"
            "/etc/large  (0644, 20000 bytes)\n"
            "/etc/link -> text\n"
            "/etc/text  (0644, 7 bytes)\n"
            "\n"
            "/etc/text:\n"
            "    a=1\n"
            "    b=2\n");
}

}  // namespace
}  // namespace lab
