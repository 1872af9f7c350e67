#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "lab/commands/command.h"
#include "lab/images/secret_seal.h"

namespace lab::commands {
namespace {

struct Request {
  std::filesystem::path key_file;
  std::string text;
};

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.native());
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

void AddSeal(CLI::App& app, Actions& actions) {
  CLI::App* const seal = app.add_subcommand("seal", "Print a secret as a device stores it");
  const auto request = std::make_shared<Request>();
  seal->add_option("--key-file", request->key_file, "The device's /usr/kelp/etc/secret.key")->required();
  seal->add_option("TEXT", request->text, "The secret")->required();
  actions[seal] = [request] {
    std::cout << SealSecret(request->text, ReadFile(request->key_file)) << '\n';
    return 0;
  };
}

}  // namespace lab::commands
