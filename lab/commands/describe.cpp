#include <iostream>
#include <memory>
#include <string>

#include "lab/commands/command.h"
#include "lab/reports/reference.h"

namespace lab::commands {

void AddDescribe(CLI::App& app, Actions& actions) {
  CLI::App* const describe = app.add_subcommand("describe", "Print a page of reference");
  const auto page = std::make_shared<std::string>();
  describe->add_option("PAGE", *page, "findings or messages")
      ->required()
      ->check(CLI::IsMember({"findings", "messages"}));
  actions[describe] = [page] {
    std::cout << (*page == "findings" ? FindingsReference() : MessagesReference());
    return 0;
  };
}

}  // namespace lab::commands
