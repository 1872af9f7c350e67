#include "tests/lab/household/household.h"

#include "lab/images/secret_seal.h"
#include "lab/runs/collected_documents.h"

namespace lab_test {
namespace {

std::string With(const std::string& text, const std::string& key, const std::string& line) {
  std::string changed;
  bool found = false;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = text.find('\n', start) + 1;
    const std::string old = text.substr(start, end - start);
    start = end;
    if (old.compare(0, key.size() + 1, key + "=") == 0) {
      found = true;
      changed += line;
    } else {
      changed += old;
    }
  }
  return found ? changed : changed + line;
}

}  // namespace

void Household::Set(const std::string& file, const std::string& key, std::string_view value) {
  files_.Write(file, With(files_.Read(file), key, key + "=" + std::string(value) + "\n"));
}

void Household::Drop(const std::string& file, const std::string& key) {
  files_.Write(file, With(files_.Read(file), key, ""));
}

void Household::SetEverywhere(const std::string& key, std::string_view value) {
  for (const char* file : {kAllBands, k24, k5}) Set(file, key, value);
}

std::string Household::Sealed(std::string_view secret) const {
  return lab::SealSecret(secret, files_.Read(kKey));
}

lab::RunResult Household::Update(const std::string& from) {
  lab::RunResult run = lab::RunProgram(files_, KELP_PROGRAM, {"--update-config", from});
  lab::CollectDocuments(run.before, run.after);
  return run;
}

}  // namespace lab_test
