#include "ox/vcard/values/property_writer.hpp"

#include <algorithm>
#include <utility>

#include "ox/vcard/lines/ascii.hpp"
#include "ox/vcard/unmodelled/line_form.hpp"

namespace ox::vcard {

std::string ItemGroups::groupFor(std::string_view preserved, std::string_view& label,
                                 bool ownLines) {
  if (!preserved.empty()) {
    const auto [taken, isFirst] = taken_.try_emplace(groupKey(preserved), Taken{label, ownLines});
    if (isFirst) return std::string(preserved);
    if (taken->second.label == label && !taken->second.isClosed && !ownLines) {
      label = {};
      return std::string(preserved);
    }
  }
  if (label.empty() && !ownLines) return {};
  return "item" + std::to_string(nextItem_++);
}

PropertyWriter::PropertyWriter(const OutgoingRecord& record, CardVersion version, std::string& out,
                               Folding folding)
    : record_(record),
      version_(version),
      out_(out),
      line_(out, folding),
      unmodelled_(record.properties),
      groups_(unmodelled_.firstFreeItem()) {
  for (const auto& [id, value] : record.properties.entries()) {
    if (id < values_.size()) values_[id] = &value;
    if (id >= kFirstCustomProperty) noteInexact(id);
  }
}

std::string_view PropertyWriter::textOf(PropertyId property) {
  const auto* value = valueOf(property);
  if (value == nullptr) return {};
  const auto* single = std::get_if<Object>(value);
  const auto* text = single != nullptr ? single->text() : nullptr;
  if (text == nullptr || text->empty()) {
    noteInexact(property);
    return {};
  }
  const CardText clean(*text);
  if (!clean.isChanged()) return *text;
  noteInexact(property);
  return cleaned_.try_emplace(property, clean.view()).first->second;
}

void PropertyWriter::writeParameters(PropertyId property) {
  for (const auto& detail : unmodelled_.parametersOf(property, 0)) {
    if (areAdmitted(detail.text, version_)) line_.raw(detail.text);
  }
  const auto rank = unmodelled_.rankOf(property, 0);
  if (rank <= 1 || !is30()) {
    writePreference(rank);
  } else {
    wrapLater(preferenceDetail(property, 0, rank));
  }
}

void PropertyWriter::writePreference(unsigned rank) {
  if (rank == 0) return;
  if (is30()) {
    line_.raw(";TYPE=pref");
  } else {
    line_.raw(";PREF=").number(rank);
  }
}

void PropertyWriter::writeWrapped(std::string_view text) {
  line_.raw("X-OX-LINE:").percent(text).end();
}

void PropertyWriter::writeWrappedLater() {
  for (const auto& detail : later_) writeWrapped(encodeDetail(viewOf(detail)));
}

void PropertyWriter::repeatLater(std::string line, PropertyDetail detail) {
  repeated_.push_back({std::move(line), std::move(detail)});
}

void PropertyWriter::writeRepeated() {
  for (auto& [line, detail] : repeated_) {
    if (isInexact(detail.property)) {
      wrapLater(std::move(detail));
    } else {
      line_.raw(line).end();
    }
  }
  repeated_.clear();
}

void PropertyWriter::noteInexact(PropertyId property) {
  if (!isInexact(property)) inexact_.push_back(property);
}

bool PropertyWriter::isInexact(PropertyId property) const {
  return std::find(inexact_.begin(), inexact_.end(), property) != inexact_.end();
}

bool PropertyWriter::hasWritten(std::string_view name) const {
  return std::any_of(written_.begin(), written_.end(),
                     [&](std::string_view other) { return isSameWord(name, other); });
}

}  // namespace ox::vcard
