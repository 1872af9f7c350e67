#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/commands/kept_device.h"
#include "lab/images/image.h"
#include "lab/images/private_root.h"
#include "lab/page/page.h"
#include "lab/page/page_file.h"
#include "lab/plain/plain_way.h"
#include "lab/reports/discretion.h"
#include "lab/reports/household_json.h"
#include "lab/reports/household_report.h"
#include "lab/reports/household_text.h"
#include "lab/reports/report.h"
#include "lab/runs/program_run.h"
#include "lab/text/json.h"

namespace lab::commands {
namespace {

namespace fs = std::filesystem;

/// The shell's own statuses for a command that was killed.
constexpr int kTimedOutStatus = 124;
constexpr int kSignalStatus = 128;

struct Request {
  fs::path image;
  ImageArguments limits;
  std::string build;
  ProgramArguments program;
  fs::path keep;
  fs::path html;
  bool documents = false;
  bool json = false;
  Discretion::Choice choice;
};

/// On a copy of the image, which is gone when the run is over.
RunResult RunOnCopy(const Request& request, const fs::path& program) {
  PrivateRoot device(ReadImage(request.image, ToImageLimits(request.limits)));
  if (!request.keep.empty()) MakeKeptDevice(request.keep);
  RunResult result = RunProgram(device, program, {"--update-config", request.build});
  if (!request.keep.empty()) KeepDevice(device, request.keep);
  return result;
}

/// The image as it was named, without a slash at its end.
std::string NameOf(const fs::path& image) {
  const fs::path named = image.has_filename() ? image : image.parent_path();
  return named.native();
}

void Print(const Request& request, const fs::path& program, const RunResult& result) {
  Discretion discretion(request.choice, result.before);
  discretion.Learn(result.after);
  const HouseholdReport report = Tell(NameOf(request.image), request.build, result, discretion);
  if (!request.html.empty()) {
    page::Page page(page::Kind::Household);
    page.Add(ToJson(report));
    page::WritePageFile(request.html, page.Html());
  }
  if (request.json) {
    Json::Value json = ParseJson(ToJson(report)).value();
    if (IsPlainWay()) json["notKeptApart"] = NotKeptApart();
    std::cout << IndentedJson(json);
    return;
  }
  PrintHousehold(std::cout, report, MayColour());
  if (!request.documents) return;
  std::cout << '\n';
  PrintReport(std::cout, program.filename().native() + " --update-config " + request.build, result,
              discretion);
}

int Run(const Request& request) {
  RequireImage(request.image);
  const fs::path program = ProgramToRun(request.program.program);
  if (!request.html.empty()) page::RequirePageFile(request.html);
  BecomeRunner({program}, request.program.is_trusted);
  const RunResult result = RunOnCopy(request, program);
  if (!request.keep.empty()) {
    std::cerr << "devicelab: the device is kept in " << request.keep.native()
              << ", with the household's secrets\n";
  }
  Print(request, program, result);
  if (result.timed_out) return kTimedOutStatus;
  return result.signal != 0 ? kSignalStatus + result.signal : result.status;
}

}  // namespace

void AddRun(CLI::App& app, Actions& actions) {
  CLI::App* const run = app.add_subcommand(
      "run", "Run the program on a copy of a device image; show the household before and after");
  const auto request = std::make_shared<Request>();
  run->add_option("IMAGE", request->image, kImageHelp)->required();
  run->add_option("--from", request->build, "The build number that the device had before")->required();
  AddImageArguments(*run, request->limits);
  AddProgramArguments(*run, request->program);
  CLI::Option* const json = run->add_flag("--json", request->json, "Print one JSON object instead");
  run->add_flag("--documents", request->documents,
                "Print the documents, the files and the log as they are as well")
      ->excludes(json);
  run->add_option("--keep", request->keep,
                  "Keep the device as the run left it in this new folder, its secrets with it");
  run->add_option("--html", request->html, "Write what is shown as a page for a browser as well");
  run->add_flag("--show-secrets", request->choice.show_secrets, "Show passwords, shared secrets and PINs");
  run->add_flag("--anonymous", request->choice.anonymous,
                "Show digests in place of SSIDs, MAC addresses, device names and mail addresses");
  actions[run] = [request] { return Run(*request); };
}

}  // namespace lab::commands
