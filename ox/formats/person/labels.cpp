#include "ox/formats/person/labels.hpp"

#include <array>

#include "ox/records/property_keys.hpp"
#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/lines/line_writer.hpp"

namespace ox::formats {
namespace {

struct LabelRow {
  std::string_view label;
  std::string_view word;
};

// Of several words for one label the first is written.
constexpr std::array kLabels = {
    LabelRow{kABHomeLabel, "Home"},
    LabelRow{kABWorkLabel, "Work"},
    LabelRow{kABWorkLabel, "Business"},
    LabelRow{kABOtherLabel, "Other"},
    LabelRow{kABHomePageLabel, "Home Page"},
    LabelRow{kABHomePageLabel, "HomePage"},
    LabelRow{kABPhoneMobileLabel, "Mobile"},
    LabelRow{kABPhoneMobileLabel, "Cell"},
    LabelRow{kABPhoneiPhoneLabel, "iPhone"},
    LabelRow{kABPhoneMainLabel, "Main"},
    LabelRow{kABPhoneHomeFAXLabel, "Home Fax"},
    LabelRow{kABPhoneWorkFAXLabel, "Work Fax"},
    LabelRow{"_$!<OtherFAX>!$_", "Other Fax"},
    LabelRow{"_$!<OtherFAX>!$_", "Fax"},
    LabelRow{kABPhonePagerLabel, "Pager"},
    LabelRow{kABFatherLabel, "Father"},
    LabelRow{kABMotherLabel, "Mother"},
    LabelRow{kABParentLabel, "Parent"},
    LabelRow{kABBrotherLabel, "Brother"},
    LabelRow{kABSisterLabel, "Sister"},
    LabelRow{kABChildLabel, "Child"},
    LabelRow{kABFriendLabel, "Friend"},
    LabelRow{kABSpouseLabel, "Spouse"},
    LabelRow{kABPartnerLabel, "Partner"},
    LabelRow{kABAssistantLabel, "Assistant"},
    LabelRow{kABManagerLabel, "Manager"},
    LabelRow{kABAnniversaryLabel, "Anniversary"},
};

}  // namespace

std::string wordOfLabel(std::string_view label) {
  for (const auto& row : kLabels) {
    if (row.label == label) return std::string(row.word);
  }
  return std::string(label);
}

std::string labelOfWord(std::string_view text) {
  const vcard::CardText plain(text);
  const auto word = vcard::trimmed(plain.view());
  for (const auto& row : kLabels) {
    if (vcard::isSameWord(row.word, word)) return std::string(row.label);
  }
  return std::string(word);
}

}  // namespace ox::formats
