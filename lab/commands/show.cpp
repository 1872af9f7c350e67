#include <filesystem>
#include <iostream>
#include <memory>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/images/image.h"
#include "lab/images/tree.h"
#include "lab/reports/discretion.h"
#include "lab/reports/report.h"

namespace lab::commands {
namespace {}  // namespace

void AddShow(CLI::App& app, Actions& actions) {
  CLI::App* const show =
      app.add_subcommand("show", "List a device image, with the content of its text files");
  struct Request {
    std::filesystem::path image;
    Discretion::Choice choice;
  };
  const auto request = std::make_shared<Request>();
  show->add_option("IMAGE", request->image, kImageHelp)->required();
  show->add_flag("--show-secrets", request->choice.show_secrets, "Show passwords, keys and PINs");
  show->add_flag("--anonymous", request->choice.anonymous,
                 "Show digests in place of SSIDs, MAC addresses, device names and mail addresses");
  actions[show] = [request] {
    RequireImage(request->image);
    // A directory is shown with whatever is in it, usable or not.
    const bool is_directory = std::filesystem::is_directory(request->image);
    const Tree device = is_directory ? ReadTree(request->image) : ReadImage(request->image);
    PrintTree(std::cout, device, Discretion(request->choice, device));
    return 0;
  };
}

}  // namespace lab::commands
