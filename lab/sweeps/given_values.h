#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "lab/images/tree.h"

namespace Json {
class Value;
}

namespace lab::sweeps {

/// What the rules can put into documents: for each place in a document the values that stand there in one of
/// the known outcomes.
class GivenValues {
 public:
  GivenValues();
  GivenValues(GivenValues&&) noexcept;
  GivenValues& operator=(GivenValues&&) noexcept;
  ~GivenValues();

  /// Takes up the values of all documents of an outcome. Throws std::runtime_error for one that is no JSON.
  void Add(const Tree& outcome);

  /// Whether the document at `path` can come out when several things fail: each value in it is one of those
  /// known for its place, and each list and object has as many members as one that is known there. A list
  /// that lacks one of its members is none.
  bool Allow(const std::string& path, std::string_view text) const;

 private:
  struct Known;
  std::map<std::string, Known> documents_;
};

}  // namespace lab::sweeps
