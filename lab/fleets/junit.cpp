#include <ostream>

#include "lab/fleets/summary.h"
#include "lab/household/findings.h"
#include "lab/text/utf8.h"

namespace lab::fleets {
namespace {

/// UTF-8 without the two characters of three bytes that XML has no form for.
std::string Characters(std::string_view text) {
  std::string valid = ValidUtf8(text);
  for (const char* const none : {"\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    for (std::size_t place = valid.find(none); place != std::string::npos; place = valid.find(none, place)) {
      valid.replace(place, 3, "?");
    }
  }
  return valid;
}

std::string XmlText(std::string_view text) {
  std::string xml;
  for (const char character : Characters(text)) {
    const auto byte = static_cast<unsigned char>(character);
    switch (character) {
      case '&':
        xml += "&amp;";
        break;
      case '<':
        xml += "&lt;";
        break;
      case '>':
        xml += "&gt;";
        break;
      case '"':
        xml += "&quot;";
        break;
      case '\n':
        xml += "&#10;";
        break;
      default:
        // XML has no form at all for control characters.
        xml += byte < 0x20 && character != '\t' ? std::string("?") : std::string(1, character);
    }
  }
  return xml;
}

std::string FindingsText(const Record& record) {
  std::string text;
  for (const std::string& id : record.findings) {
    const FindingKind* const kind = FindFindingKind(id);
    text += id + (kind != nullptr ? ": " + std::string(kind->title) : "") + "\n";
  }
  return text;
}

std::string TestCase(const Record& record) {
  std::string xml = "  <testcase classname=\"from " + XmlText(record.from) + "\" name=\"" +
                    XmlText(record.image) + "\" time=\"" +
                    std::to_string(static_cast<double>(record.milliseconds) / 1000) + "\">";
  const std::string outcome(OutcomeName(record.outcome));
  const auto element = [&](const char* name) {
    return "<" + std::string(name) + " message=\"" + outcome + ": " + XmlText(CauseOf(record)) + "\">" +
           XmlText(record.error) + "</" + name + ">";
  };
  switch (record.outcome) {
    case Outcome::Failed:
    case Outcome::Crashed:
    case Outcome::TimedOut:
      xml += element("failure");
      break;
    case Outcome::IncompleteImage:
    case Outcome::UnusableImage:
      xml += element("error");
      break;
    case Outcome::Skipped:
    case Outcome::NothingToDo:
      xml += "<skipped message=\"" + outcome + "\"/>";
      break;
    default:
      break;
  }
  if (!record.findings.empty()) xml += "<system-out>" + XmlText(FindingsText(record)) + "</system-out>";
  return xml + "</testcase>\n";
}

std::size_t Count(const Summary& summary, std::initializer_list<Outcome> outcomes) {
  std::size_t count = 0;
  for (const Outcome outcome : outcomes) {
    const auto found = summary.outcomes.find(outcome);
    count += found == summary.outcomes.end() ? 0 : found->second;
  }
  return count;
}

}  // namespace

void WriteJUnit(std::ostream& out, const Summary& summary,
                const std::function<void(const std::function<void(Record&&)>&)>& for_each_record) {
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuite name=\"devicelab\" tests=\""
      << summary.devices << "\" failures=\""
      << Count(summary, {Outcome::Failed, Outcome::Crashed, Outcome::TimedOut}) << "\" errors=\""
      << Count(summary, {Outcome::IncompleteImage, Outcome::UnusableImage}) << "\" skipped=\""
      << Count(summary, {Outcome::Skipped, Outcome::NothingToDo}) << "\">\n";
  for_each_record([&](Record&& record) { out << TestCase(record); });
  out << "</testsuite>\n";
}

}  // namespace lab::fleets
