#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "lab/fleets/record.h"
#include "lab/fleets/summary.h"
#include "lab/images/tar_text.h"
#include "lab/images/tree.h"
#include "tests/support/child_process.h"
#include "tests/support/full_way.h"
#include "tests/support/mounts.h"
#include "tests/support/temporary_folder.h"

namespace lab {
namespace {

namespace fs = std::filesystem;
using lab_test::ReadFile;
using lab_test::TemporaryFolder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing_support::Shell;
using testing_support::ShellResult;

/// A few made-up devices, and a place for everything else.
class Fleets : public ::testing::Test {
 protected:
  Fleets() { EXPECT_EQ(Lab("new devices --count 20 --seed 3 --plain").status, 0); }

  ShellResult Lab(const std::string& arguments) const {
    return testing_support::WithoutNotice(
        Shell("cd " + folder_.Path().native() + " && " + DEVICELAB + " " + arguments));
  }

  ShellResult Fleet(const std::string& arguments) const {
    return Lab("fleet --from 8000 --jobs 2 --output out " + arguments);
  }

  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    std::string text = ReadFile(folder_ / "out");
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      lines.push_back(text.substr(0, end));
      text.erase(0, end + 1);
    }
    EXPECT_EQ(text, "") << "a torn line";
    std::ranges::sort(lines);
    return lines;
  }

  /// Image and outcome of each record, sorted.
  std::vector<std::string> Outcomes() const {
    std::vector<std::string> outcomes;
    for (const std::string& line : Lines()) {
      const auto record = fleets::ParseRecord(line);
      EXPECT_TRUE(record) << line;
      if (record) outcomes.push_back(record->image + " " + std::string(OutcomeName(record->outcome)));
    }
    return outcomes;
  }

  TemporaryFolder folder_;
};

TEST_F(Fleets, LeaveTheirImagesAlone) {
  const Tree before = ReadTree(folder_ / "devices");
  EXPECT_EQ(Fleet("@devices/list.jsonl").status, 0);
  EXPECT_EQ(Lab("compare @devices/list.jsonl --from 8000 --old " KELP_PROGRAM " --new " KELP_PROGRAM).status,
            0);
  EXPECT_EQ(ReadTree(folder_ / "devices"), before);
}

TEST_F(Fleets, GoThroughAList) {
  const ShellResult result = Fleet("@devices/list.jsonl");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, StartsWith("20 devices\n\nOutcomes\n      20  100.0 %  migrated\n"));
  EXPECT_EQ(Lines().size(), 20U);
  EXPECT_THAT(ReadFile(folder_ / "out"), HasSubstr("\"image\":\"devices/device-000020\""));
  EXPECT_THAT(ReadFile(folder_ / "out"), Not(HasSubstr("household")));
}

TEST_F(Fleets, GiveTheSameForFoldersAndArchives) {
  ASSERT_EQ(Lab("new archives --count 20 --seed 3 --plain --archive").status, 0);
  ASSERT_EQ(Lab("fleet @archives/list.jsonl --from 8000 --output archives.out").status, 0);
  ASSERT_EQ(Fleet("@devices/list.jsonl").status, 0);
  const ShellResult compared = Shell(
      "cd " + folder_.Path().native() +
      " && normal() { sed 's/archives/devices/; s/\\.tar\"/\"/; s/\"milliseconds\":[0-9]*//' $1 | sort; } && "
      "normal out > a && normal archives.out > b && cmp a b");
  EXPECT_EQ(compared.status, 0) << compared.output;
}

TEST_F(Fleets, GoOnWhereTheyStopped) {
  ASSERT_EQ(Fleet("@devices/list.jsonl").status, 0);
  const std::string all = ReadFile(folder_ / "out");
  std::size_t tenth = 0;
  for (int i = 0; i < 10; ++i) tenth = all.find('\n', tenth) + 1;
  folder_.Write("out", all.substr(0, tenth + 40));  // the eleventh line is torn
  const ShellResult result = Fleet("@devices/list.jsonl");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, StartsWith("20 devices\n"));
  EXPECT_EQ(ReadFile(folder_ / "out").substr(0, tenth), all.substr(0, tenth));
  const std::vector<std::string> outcomes = Outcomes();
  EXPECT_EQ(std::set(outcomes.begin(), outcomes.end()).size(), 20U) << "no device twice";
  EXPECT_EQ(outcomes.size(), 20U);
}

TEST_F(Fleets, LeaveAForeignFileAlone) {
  folder_.Write("out", "my notes\n");
  const ShellResult result = Fleet("@devices/list.jsonl");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("out:1 is no record of a fleet"));
  EXPECT_EQ(ReadFile(folder_ / "out"), "my notes\n");
}

TEST_F(Fleets, NameTheListLinesThatAreNone) {
  folder_.Write("devices/list", "{\"image\":\"device-000001\"}\nnot json\n{\"image\":\"device-000002\"}\n");
  const ShellResult result = Fleet("@devices/list");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("devicelab: devices/list:2: is no JSON object\n"));
  EXPECT_EQ(Lines().size(), 2U);
}

TEST_F(Fleets, TakeADeviceOnce) {
  const ShellResult result = Fleet("devices/device-000001 devices/device-000001");
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("devices/device-000001 with build 8000 comes again"));
  EXPECT_EQ(Lines().size(), 1U);
}

TEST_F(Fleets, ReadAListFromStandardInput) {
  const ShellResult result = Shell("cd " + (folder_ / "devices").native() + " && head -n 3 list.jsonl | " +
                                   DEVICELAB + " fleet @- --from 8000 --output ../out");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(Outcomes(),
              ElementsAre("device-000001 migrated", "device-000002 migrated", "device-000003 migrated"));
}

TEST_F(Fleets, GoOnBehindUnusableImages) {
  folder_.Write("hostile.tar", TarEntry("/etc/passwd", '0', 0644, "") + TarEnd());
  folder_.Write("torn.tar", TarEntry("a", '0', 0644, std::string(2000, 'x')).substr(0, 1000));
  const ShellResult result =
      Fleet("hostile.tar none torn.tar devices/device-000001 --overlay devices/device-000001");
  EXPECT_EQ(result.status, 0) << "not what it fails for: " << result.output;
  EXPECT_THAT(Outcomes(), ElementsAre("devices/device-000001 incomplete-image", "hostile.tar unusable-image",
                                      "none unusable-image", "torn.tar unusable-image"));
  EXPECT_EQ(Fleet("hostile.tar --fail-on unusable-image").status, 1);
}

TEST_F(Fleets, NeedTheirOverlays) {
  const ShellResult result = Fleet("@devices/list.jsonl --overlay none");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "devicelab: none cannot be opened: No such file or directory\n");
  EXPECT_FALSE(fs::exists(folder_ / "out")) << "nothing was found out about any device";
}

TEST_F(Fleets, TakeNoImageForAnOverlay) {
  folder_.Write("overlay/etc/x", "x");
  EXPECT_EQ(Fleet("--overlay overlay devices/device-000001 devices/device-000002").status, 0);
  EXPECT_EQ(Fleet("--fail-on failed,migrated devices/device-000003 devices/device-000004").status, 0);
  EXPECT_THAT(
      Outcomes(),
      ElementsAre("devices/device-000001 incomplete-image", "devices/device-000002 incomplete-image",
                  "devices/device-000003 incomplete-image", "devices/device-000004 incomplete-image"));
}

TEST_F(Fleets, EndWithTwoWhereTheyCouldNotDoTheirWork) {
  EXPECT_EQ(Lab("fleet devices/device-000001 --output out").status, 2) << "no build number";
  EXPECT_EQ(Fleet("devices/device-000001 --no-such-option").status, 2);
  EXPECT_EQ(Fleet("devices/device-000001 --limit nan").status, 2);
  EXPECT_EQ(Fleet("@devices/list.jsonl >/dev/full").status, 2);
  EXPECT_EQ(Lines().size(), 20U) << "which is no reason to lose records";
  EXPECT_EQ(Lab("summary out >/dev/full").status, 2);
  EXPECT_EQ(Lab("summary").status, 2);
  const ShellResult pipe = Lab("summary /dev/stdin < /dev/null; cat out | " DEVICELAB " summary /dev/stdin");
  EXPECT_EQ(pipe.status, 2);
  EXPECT_THAT(pipe.output, HasSubstr("/dev/stdin is no regular file"));
  EXPECT_EQ(Lab("compare devices/device-000001 --from 8000").status, 2);
}

TEST_F(Fleets, SayNothingThatATerminalObeys) {
  folder_.Write("list", "{\"\\u001b[2J\":1}\n");
  EXPECT_THAT(Fleet("@list").output, HasSubstr("devicelab: list:1: \"\\x1b[2J\" is no member of a list"));
}

TEST_F(Fleets, FailOnWhatTheyAreTold) {
  EXPECT_EQ(Fleet("@devices/list.jsonl --fail-on migrated,ssid-lost").status, 1);
  EXPECT_EQ(Fleet("@devices/list.jsonl --fail-on ssid-lost").status, 0) << "with nothing left to do";
  EXPECT_EQ(Fleet("@devices/list.jsonl --fail-on none").status, 0);
  const ShellResult unknown = Fleet("@devices/list.jsonl --fail-on lost");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.output, HasSubstr("neither an outcome nor a finding is called lost"));
  EXPECT_EQ(Fleet("@devices/none").status, 2);
  EXPECT_EQ(Fleet("@devices/list.jsonl --program /no/program").status, 2);
}

/// A program in place of the real one, as a script cannot be.
class FleetsOfOddPrograms : public Fleets {
 protected:
  ShellResult With(const std::string& build, const std::string& more = "") const {
    return Lab("fleet devices/device-000001 --from " + build + " --output out --trust-program --program " +
               TEST_PROGRAM + " " + more);
  }
};

TEST_F(FleetsOfOddPrograms, TellHowTheyEnd) {
  EXPECT_EQ(With("crash").status, 1);
  EXPECT_THAT(Outcomes(), ElementsAre("devices/device-000001 crashed"));
  EXPECT_EQ(With("bad").status, 1);
  EXPECT_EQ(With("hang", "--limit 0.2").status, 1);
  EXPECT_THAT(ReadFile(folder_ / "out"), HasSubstr("\"outcome\":\"timed-out\",\"status\":null,\"signal\":9"));
}

/// A build number of this test's own, by which the programs that run for it are found among all others.
std::string OwnBuild(const std::string& behaviour) {
  return behaviour + "-" + std::to_string(::getpid());
}

/// How many programs run with the build number, once that is `wanted`, or after a while.
std::string CountOf(const std::string& build, const std::string& wanted) {
  return Shell("for i in $(seq 200); do n=$(pgrep -fc '^/usr/sbin/lab_test_program --update-config " + build +
               "$'); [ \"$n\" != " + wanted + " ] || break; sleep 0.05; done; printf %s \"$n\"")
      .output;
}

TEST_F(FleetsOfOddPrograms, EndThemWithAllTheirChildren) {
  const std::string build = OwnBuild("fork");
  EXPECT_EQ(With(build, "--limit 0.5").status, 1);
  EXPECT_EQ(CountOf(build, "0"), "0");
}

class InterruptedFleets : public Fleets, public ::testing::WithParamInterface<std::pair<int, std::string>> {
 protected:
  /// Starts the command as a terminal does, and gives its process.
  pid_t Start(const std::string& arguments) const {
    const std::string command = "exec " + std::string(DEVICELAB) + " " + arguments + " >said 2>&1 </dev/null";
    const pid_t pid = ::fork();
    if (pid != 0) return pid;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
    if (::chdir(folder_.Path().c_str()) != 0 || ::setenv("TMPDIR", (folder_ / "tmp").c_str(), 1) != 0)
      ::_exit(126);
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
    ::_exit(127);
  }

  /// Where devices are laid out.
  std::vector<std::string> Mounts() const {
    std::vector<std::string> mounts = testing_support::MountsBelow("/sys");
    std::ranges::move(testing_support::MountsBelow(folder_.Path()), std::back_inserter(mounts));
    return mounts;
  }

  void ExpectNothingLeft(const std::vector<std::string>& mounts) const {
    EXPECT_TRUE(fs::is_empty(folder_ / "tmp"));
    EXPECT_EQ(Mounts(), mounts);
    EXPECT_THAT(Lines(), IsEmpty());
  }

  /// "exit 2" or "signal 9".
  static std::string EndOf(pid_t pid) {
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? "exit " + std::to_string(WEXITSTATUS(status))
                             : "signal " + std::to_string(WTERMSIG(status));
  }
};

TEST_P(InterruptedFleets, LeaveNothingBehind) {
  const auto& [signal, end] = GetParam();
  const std::string build = OwnBuild("hang");
  fs::create_directory(folder_ / "tmp");
  const auto mounts = Mounts();
  const std::string rest = " --jobs 2 --output out --trust-program --program " TEST_PROGRAM;
  const pid_t lab = Start("fleet devices/device-00000* --from " + build + " --limit 60" + rest);
  EXPECT_EQ(CountOf(build, "2"), "2");
  ::kill(lab, signal);
  EXPECT_EQ(EndOf(lab), end);
  EXPECT_EQ(CountOf(build, "0"), "0");
  if (signal != SIGKILL) {
    EXPECT_THAT(ReadFile(folder_ / "said"),
                HasSubstr("interrupted; the records of 0 devices are in out, and the same"));
  }
  ExpectNothingLeft(mounts);
  EXPECT_EQ(Lab("fleet devices/device-00000* --from " + build + " --limit 0.1" + rest).status, 1);
  EXPECT_EQ(Lines().size(), 9U);
}

/// Shell commands that wait until the fleet $lab minds signals, which it does before it opens a list.
constexpr const char* kAwaitFleet =
    "for i in $(seq 200); do grep -Eq '^SigBlk:.*4...$' /proc/$lab/status && break; sleep 0.05; done; sleep "
    "0.1; ";

TEST_F(Fleets, AreInterruptedWhileTheirListHasNotCome) {
  const ShellResult result =
      Shell("cd " + folder_.Path().native() + " && mkfifo list && { " + DEVICELAB +
            " fleet @list --from 8000 --output out & lab=$!; } && " + kAwaitFleet +
            "kill -TERM $lab; { sleep 10; kill -KILL $lab; } 2>&1 >/dev/null & wait $lab");
  EXPECT_EQ(result.status, 2) << result.output;
  EXPECT_THAT(result.output, HasSubstr("interrupted; the records of 0 devices are in out"));
}

TEST_F(Fleets, GoOnWhereTheyAreToIgnoreASignal) {
  const ShellResult result =
      Shell("cd " + folder_.Path().native() + " && mkfifo list && trap '' HUP && { " + DEVICELAB +
            " fleet @list --from 8000 --output out & lab=$!; } && " + kAwaitFleet +
            "kill -HUP $lab; sleep 0.2; head -n 1 devices/list.jsonl | sed 's#device-#devices/device-#' "
            ">list; wait $lab");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(Lines().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(BySignal, InterruptedFleets,
                         ::testing::Values(std::pair{SIGINT, "exit 2"}, std::pair{SIGTERM, "exit 2"},
                                           std::pair{SIGHUP, "exit 2"}, std::pair{SIGKILL, "signal 9"}));

TEST_F(Fleets, StopWhenTheDiskIsFull) {
  // As many bytes as a few records have.
  const ShellResult result = Shell("cd " + folder_.Path().native() + " && ulimit -f 8 && trap '' XFSZ && " +
                                   DEVICELAB + " fleet @devices/list.jsonl --from 8000 --output out");
  EXPECT_EQ(result.status, 2) << result.output;
  EXPECT_THAT(result.output, HasSubstr("cannot write out: File too large"));
  const std::size_t kept = Lines().size();
  EXPECT_GT(kept, 0U);
  EXPECT_LT(kept, 20U);
  EXPECT_EQ(Fleet("@devices/list.jsonl").status, 0);
  EXPECT_EQ(Lines().size(), 20U);
}

TEST_F(Fleets, KeepSecretsOutOfRecordsAndSummaries) {
  ASSERT_EQ(Lab("new real --count 200 --seed 11").status, 0);
  const ShellResult result = Fleet("@real/list.jsonl --details");
  const std::string records = ReadFile(folder_ / "out");
  for (const char* secret : {"correct horse", "summer rain 42", "0123456789", "grüne Wiese", "open sesame!",
                             "river & stone", "p4ssw0rd-x", "hunter's moon"}) {
    EXPECT_THAT(records, Not(HasSubstr(secret)));
    EXPECT_THAT(result.output, Not(HasSubstr(secret)));
  }
  EXPECT_THAT(records, HasSubstr("Failed to decrypt ssid with ********"));
  EXPECT_THAT(records, HasSubstr(",\"household\":{"));
}

TEST_F(Fleets, AreSummarized) {
  ASSERT_EQ(Fleet("@devices/list.jsonl").status, 0);
  const ShellResult text = Lab("summary out out");
  EXPECT_EQ(text.status, 0);
  EXPECT_THAT(text.output, StartsWith("20 devices\n"));
  const ShellResult json = Lab("summary out --json --junit report.xml");
  EXPECT_THAT(json.output, StartsWith("{\"schema\":1,\"devices\":20,\"outcomes\":{\"migrated\":20}"));
  EXPECT_THAT(ReadFile(folder_ / "report.xml"), HasSubstr("tests=\"20\" failures=\"0\""));
  EXPECT_EQ(Lab("summary none").status, 2);
  folder_.Write("notes", "notes\n");
  EXPECT_EQ(Lab("summary notes out").status, 2);
}

TEST_F(Fleets, OfNewDevicesAreTheSameForTheSameSeed) {
  ASSERT_EQ(Lab("new again --count 20 --seed 3 --plain").status, 0);
  EXPECT_EQ(Lab("new again --count 20 --seed 3").output, "devicelab: again is not empty\n");
  EXPECT_EQ(Shell("cd " + folder_.Path().native() + " && diff -r devices again").status, 0);
  EXPECT_FALSE(fs::exists(folder_ / "devices/device-000001/proc")) << "no backup holds it";
  EXPECT_THAT(ReadFile(folder_ / "devices/list.jsonl"), HasSubstr("/proc/sys/kernel/kelp_mac_address3"));
}

TEST_F(Fleets, CompareTwoPrograms) {
  const ShellResult same =
      Lab("compare @devices/list.jsonl --from 8000 --old " KELP_PROGRAM " --new " KELP_PROGRAM);
  EXPECT_EQ(same.status, 0) << same.output;
  EXPECT_EQ(same.output, "0 of 20 devices differ\n");
  const std::string other = " --from 8000 --old " KELP_PROGRAM " --trust-program --new " TEST_PROGRAM;
  const ShellResult text = Lab("compare devices/device-000001 --overlay devices/device-000001" + other);
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.output,
              StartsWith("devices/device-000001 from 8000\n    outcome: \"incomplete-image, status 1\" -> "));
  EXPECT_THAT(text.output, HasSubstr("    /usr/kelp/etc/wifi/global.json: \"file of "));
  const ShellResult json = Lab("compare devices/device-000001 --json" + other);
  EXPECT_EQ(json.status, 1);
  EXPECT_THAT(json.output, StartsWith("{\"schema\":1,\"image\":\"devices/device-000001\",\"from\":\"8000\","
                                      "\"differences\":[{\"what\":\"outcome\",\"old\":"));
  EXPECT_EQ(Lab("compare none --from 8000 --old /no/program --new " KELP_PROGRAM).status, 2);
}

TEST_F(Fleets, AreNotTheSameForTwoProgramsThatCouldNotBeTried) {
  const ShellResult result =
      Lab("compare none devices/device-000001 --from 8000 --old " KELP_PROGRAM " --new " KELP_PROGRAM);
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.output, HasSubstr("devicelab: none cannot be opened: No such file or directory\n"));
  EXPECT_THAT(result.output, HasSubstr("0 of 1 devices differ\n"));
}

TEST_F(Fleets, ExplainArchivesAsFolders) {
  folder_.Write("small/usr/kelp/etc/info.conf", "kelpbios=maple\nwps_pin=1234\ncolour=blue\n");
  folder_.Write("small/usr/kelp/etc/wifi/wifi_wps", "");
  const ShellResult folder = Lab("explain small --from 8000");
  EXPECT_EQ(folder.status, 0);
  EXPECT_THAT(folder.output,
              StartsWith("devicelab: the update of this device ends as incomplete-image; what"));
  EXPECT_THAT(folder.output, HasSubstr("/usr/kelp/etc/info.conf: "));
  ASSERT_EQ(Shell("cd " + folder_.Path().native() + " && tar -C small -cJf small.tar.xz .").status, 0);
  EXPECT_EQ(Lab("explain small.tar.xz --from 8000").output, folder.output);
}

/// Whether the file is a page that needs nothing besides and holds the text.
void ExpectPage(const fs::path& file, const std::string& text) {
  const std::string html = ReadFile(file);
  EXPECT_THAT(html, StartsWith("<!DOCTYPE html>\n")) << file;
  EXPECT_THAT(html, ::testing::EndsWith("</html>\n")) << file;
  EXPECT_THAT(html, HasSubstr("default-src 'none'")) << file;
  EXPECT_THAT(html, HasSubstr(text)) << file;
  for (const char* from_elsewhere : {"<link", "src=\"", "@import", "url(\"http", "url(http", "href=\"http"}) {
    EXPECT_THAT(html, Not(HasSubstr(from_elsewhere))) << file;
  }
}

TEST_F(Fleets, AreDrawnAsPages) {
  EXPECT_EQ(Fleet("@devices/list.jsonl --html fleet.html").status, 0);
  ExpectPage(folder_ / "fleet.html", "devices/device-000020");
  EXPECT_EQ(Lab("summary out --html summary.html").status, 0);
  ExpectPage(folder_ / "summary.html", "devices/device-000020");
  // A household is read by the page alone.
  std::string records = ReadFile(folder_ / "out");
  records.replace(records.find("\"household\":{"), 13, "\"household\":[");
  folder_.Write("damaged", records);
  EXPECT_EQ(Lab("summary damaged").status, 0);
  const auto summary = Lab("summary damaged --html damaged.html");
  EXPECT_EQ(summary.status, 2);
  EXPECT_THAT(summary.output, HasSubstr("devicelab: the household of devices/device-0000"));
  EXPECT_THAT(summary.output, HasSubstr(" is no JSON, and is not in the page\n"));
  ExpectPage(folder_ / "damaged.html", "devices/device-000020");
  EXPECT_EQ(Lab("compare devices/device-000001 --from 8000 --old " KELP_PROGRAM
                " --trust-program --new " TEST_PROGRAM " --html compare.html")
                .status,
            1);
  ExpectPage(folder_ / "compare.html", "devices/device-000001");
  const std::string sample = KELP_SOURCE "/devices/dual-band-standalone";
  EXPECT_EQ(Lab("run " + sample + " --from 8000 --html run.html").status, 0);
  ExpectPage(folder_ / "run.html", sample);
  EXPECT_EQ(Lab("fleet @devices/list.jsonl --from 8000 --output out --html none/fleet.html").status, 2);
}

}  // namespace
}  // namespace lab
