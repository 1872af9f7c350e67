#include "platform/stand_in/json/plain_json.h"

#include <bitset>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace KELP::Wifi {
namespace {

constexpr int kEnd = -1;

/// Goes over the text once. Which brackets are open is kept as a bit each, so that depth costs no stack.
class Scanner {
 public:
  explicit Scanner(const std::string& text) : text_(text) {}

  void Document() {
    if (text_.starts_with("\xEF\xBB\xBF")) at_ = 3;  // the library passes over it, too
    Blanks();
    if (Next() != '{' && Next() != '[') Refuse("neither an object nor an array");
    do {
      Value();
      EndOfValue();
    } while (depth_ > 0);
    if (Next() != kEnd) Refuse("something behind the document");
  }

 private:
  int Next() const { return at_ < text_.size() ? static_cast<unsigned char>(text_[at_]) : kEnd; }
  bool InObject() const { return depth_ > 0 && is_object_[depth_ - 1]; }
  int ClosingBracket() const { return InObject() ? '}' : ']'; }

  [[noreturn]] void Refuse(const char* what) const {
    std::size_t line = 1;
    std::size_t line_begin = 0;
    for (std::size_t i = 0; i < at_; ++i) {
      if (text_[i] != '\n') continue;
      ++line;
      line_begin = i + 1;
    }
    throw std::runtime_error("line " + std::to_string(line) + ", column " +
                             std::to_string(at_ - line_begin + 1) + ": " +
                             (Next() == kEnd ? "the document ends too early" : what));
  }

  void Require(int byte, const char* what) {
    if (Next() != byte) Refuse(what);
    ++at_;
  }

  void Blanks() {
    while (Next() == ' ' || Next() == '\t' || Next() == '\n' || Next() == '\r') ++at_;
  }

  /// A value that holds no other, with the opening brackets before it; or just those, when the innermost
  /// stays empty.
  void Value() {
    while (Next() == '{' || Next() == '[') {
      if (depth_ == kDeepestJson) Refuse("too many levels");
      is_object_[depth_++] = Next() == '{';
      ++at_;
      Blanks();
      if (Next() == ClosingBracket()) return;
      if (InObject()) Name();
    }
    Scalar();
    Blanks();
  }

  /// The closing brackets behind a value, and all that comes before the next one.
  void EndOfValue() {
    while (depth_ > 0 && Next() == ClosingBracket()) {
      --depth_;
      ++at_;
      Blanks();
    }
    if (depth_ == 0) return;
    Require(',', "neither a comma nor the closing bracket");
    Blanks();
    if (InObject()) Name();
  }

  void Name() {
    if (Next() != '"') Refuse("no member's name");
    Text();
    Blanks();
    Require(':', "no colon behind a member's name");
    Blanks();
  }

  void Scalar() {
    switch (Next()) {
      case '"':
        return Text();
      case 't':
        return Word("true");
      case 'f':
        return Word("false");
      case 'n':
        return Word("null");
      default:
        return Number();
    }
  }

  void Word(const char* word) {
    if (text_.compare(at_, std::strlen(word), word) != 0) Refuse("no value");
    at_ += std::strlen(word);
  }

  void Text() {
    Require('"', "no text");
    while (Next() != '"') {
      if (Next() < 0x20) Refuse("a control character in a text");  // or the end
      if (Next() == '\\') {
        Escape();
      } else {
        ++at_;
      }
    }
    ++at_;
  }

  void Escape() {
    ++at_;
    if (Next() == kEnd || std::strchr("\"\\/bfnrtu", Next()) == nullptr || Next() == '\0') {
      Refuse("an unknown escape");
    }
    if (Next() != 'u') {
      ++at_;
      return;
    }
    const unsigned unit = CodeUnit();
    if (unit < 0xD800 || unit > 0xDFFF) return;
    if (unit > 0xDBFF || text_.compare(at_, 2, "\\u") != 0) Refuse("half a surrogate pair");
    ++at_;
    const unsigned low = CodeUnit();
    if (low < 0xDC00 || low > 0xDFFF) Refuse("half a surrogate pair");
  }

  /// "u" and four hexadecimal digits.
  unsigned CodeUnit() {
    ++at_;
    unsigned unit = 0;
    for (int i = 0; i < 4; ++i, ++at_) {
      const int digit = Next();
      if (digit >= '0' && digit <= '9') {
        unit = unit * 16 + static_cast<unsigned>(digit - '0');
      } else if ((digit >= 'a' && digit <= 'f') || (digit >= 'A' && digit <= 'F')) {
        unit = unit * 16 + static_cast<unsigned>((digit | 0x20) - 'a' + 10);
      } else {
        Refuse("no four hexadecimal digits in an escape");
      }
    }
    return unit;
  }

  void Number() {
    const char* const begin = text_.c_str() + at_;
    if (Next() == '-') ++at_;
    if (Next() == '0') {
      ++at_;
    } else {
      Digits("no value");
    }
    if (Next() == '.') {
      ++at_;
      Digits("no digit behind a point");
    }
    if (Next() == 'e' || Next() == 'E') {
      ++at_;
      if (Next() == '+' || Next() == '-') ++at_;
      Digits("no digit in an exponent");
    }
    if (std::isinf(std::strtod(begin, nullptr))) Refuse("a number out of range");
  }

  void Digits(const char* what) {
    const std::size_t begin = at_;
    while (Next() >= '0' && Next() <= '9') ++at_;
    if (at_ == begin) Refuse(what);
  }

  const std::string& text_;
  std::size_t at_ = 0;
  std::size_t depth_ = 0;
  std::bitset<kDeepestJson> is_object_;
};

}  // namespace

void RequirePlainJson(const std::string& text) {
  Scanner(text).Document();
}

}  // namespace KELP::Wifi
