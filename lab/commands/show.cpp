#include <filesystem>
#include <iostream>
#include <memory>

#include "lab/commands/arguments.h"
#include "lab/commands/command.h"
#include "lab/images/tree.h"
#include "lab/reports/report.h"

namespace lab::commands {

void AddShow(CLI::App& app, Actions& actions) {
  CLI::App* const show =
      app.add_subcommand("show", "List a device image, with the content of its text files");
  const auto image = std::make_shared<std::filesystem::path>();
  show->add_option("IMAGE", *image, "A folder that mirrors the device's files")->required();
  actions[show] = [image] {
    RequireImage(*image);
    PrintTree(std::cout, ReadTree(*image));
    return 0;
  };
}

}  // namespace lab::commands
