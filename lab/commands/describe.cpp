#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "lab/commands/command.h"
#include "lab/reports/documents_reference.h"
#include "lab/reports/reference.h"

namespace lab::commands {

void AddDescribe(CLI::App& app, Actions& actions) {
  static const std::map<std::string, std::function<std::string()>> kPages{
      {"documents", DocumentsReference}, {"findings", FindingsReference}, {"messages", MessagesReference}};
  CLI::App* const describe = app.add_subcommand("describe", "Print a page of reference");
  const auto page = std::make_shared<std::string>();
  describe->add_option("PAGE", *page, "documents, findings or messages")
      ->required()
      ->check(CLI::IsMember({"documents", "findings", "messages"}));
  actions[describe] = [page] {
    std::cout << kPages.at(*page)();
    return 0;
  };
}

}  // namespace lab::commands
