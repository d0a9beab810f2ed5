#include "ox/OxAddressBookSDK/general/book_writer.hpp"

#include <algorithm>
#include <cassert>
#include <utility>

#include "ox/OxAddressBookSDK/general/book_format.hpp"
#include "ox/OxAddressBookSDK/general/object_json.hpp"
#include "ox/OxAddressBookSDK/general/packed_picture.hpp"
#include "ox/OxAddressBookSDK/general/picture_bytes.hpp"
#include "ox/OxAddressBookSDK/values/OxMutableMultipleValue.hpp"
#include "ox/base/failures.hpp"
#include "ox/base/text/utf8.hpp"

namespace ox {
namespace {

using namespace book_format;

void writeLabel(JsonWriter& out, const OxLabel& label) {
  out.writeName("label");
  out.beginObject();
  out.writeMember("name", label.name());
  out.writeMember("displayName", label.displayName());
  out.endObject();
}

// The members of one value; the caller has begun the object.
void writeSingle(JsonWriter& out, const OxMutableSingleValue& value) {
  if (value.type() == value_type::kMultiple) throw Unwritable("a single value of multiple type");
  out.writeMember("type", std::int64_t{value.type()});
  if (value.label()) writeLabel(out, *value.label());
  if (value.value().isMissing()) return;
  out.writeName("value");
  writeObject(out, value.value());
}

void writeMultiple(JsonWriter& out, const OxMutableMultipleValue& multiple) {
  out.writeMember("type", std::int64_t{multiple.type()});
  if (const auto main = multiple.mainValue()) {
    out.writeMember("main", static_cast<std::int64_t>(multiple.indexOfValue(main)));
  }
  out.writeName("values");
  out.beginArray();
  for (std::uint64_t i = 0; i < multiple.count(); ++i) {
    out.beginObject();
    writeSingle(out, *multiple.valueAtIndex(i));
    out.endObject();
  }
  out.endArray();
}

void writeProperty(JsonWriter& out, const OxProperty& property, const OxValue& value) {
  // Two names could become one if they were repaired.
  if (!isValidUtf8(property.name())) throw Unwritable("a property name that is not UTF-8");
  out.beginObject();
  out.writeMember("property", std::string_view(property.name()));
  if (const auto* multiple = dynamic_cast<const OxMutableMultipleValue*>(&value)) {
    writeMultiple(out, *multiple);
  } else if (const auto* single = dynamic_cast<const OxMutableSingleValue*>(&value)) {
    writeSingle(out, *single);
  } else {
    throw Unwritable("a value of a foreign class");
  }
  out.endObject();
  if (pixelsInPackedPictures(value) > kMaxPackedPixels) throw Unwritable(kTooManyPixels);
}

// What is to be mended before the book can be written.
std::string placeOf(const OxGeneralPerson& person, std::string_view key,
                    const OxProperty& property) {
  const auto name = person.displayName().value_or("");
  return validUtf8(property.name() + " of " + (name.empty() ? "" : name + ", ") + std::string(key));
}

void writePerson(JsonWriter& out, std::string_view key, const OxGeneralPerson& person) {
  if (person.values().size() > kMaxEntries) {
    throw Unwritable(std::string(key) + ": a person of too many properties");
  }
  out.beginObject();
  out.writeMember("person", key);
  out.writeName("values");
  out.beginArray();
  for (const auto& [property, value] : person.values()) {
    try {
      writeProperty(out, *property, *value);
    } catch (const Unwritable& reason) {
      throw Unwritable(placeOf(person, key, *property) + ": " + reason.what());
    }
  }
  out.endArray();
  out.endObject();
  out.endLine();
}

void writeKeys(JsonWriter& out, std::string_view name, const OxGeneralGroup::Keys& keys) {
  out.writeName(name);
  out.beginArray();
  for (const auto& key : keys) out.writeText(key);
  out.endArray();
}

void writeGroup(JsonWriter& out, std::string_view key, const OxGeneralGroup& group) {
  out.beginObject();
  out.writeMember("group", key);
  out.writeMember("title", group.title());
  writeKeys(out, "subArray", group.subArray());
  writeKeys(out, "persons", group.persons());
  out.endObject();
  out.endLine();
}

bool holdsPictureFile(const OxGeneralPerson& person) {
  return std::ranges::any_of(person.values(),
                             [](const auto& entry) { return ox::holdsPictureFile(*entry.second); });
}

}  // namespace

BookWriter::BookWriter() : out_(std::string(kHeader)) {}

void BookWriter::add(std::string_view key, const OxGeneralGroup& group) {
  assert(persons_.empty());
  addLine(groups_, key, [&](Line&) { writeGroup(out_, key, group); });
}

void BookWriter::add(std::string_view key, const OxGeneralPerson& person) {
  addLine(persons_, key, [&](Line& line) {
    line.holdsPictureFile = holdsPictureFile(person);
    writePerson(out_, key, person);
  });
}

template <typename Write>
void BookWriter::addLine(Places& places, std::string_view key, Write write) {
  if (failure_) return;
  try {
    Line line;
    line.begin = out_.size();
    try {
      write(line);
    } catch (const Unwritable& reason) {
      line.refusal = reason.what();
      out_.endLine();
    }
    line.end = out_.size();
    const auto [place, isNew] = places.try_emplace(std::string(key), lines_.size());
    if (isNew) {
      lines_.push_back(std::move(line));
    } else {
      lines_[place->second] = std::move(line);
      areInOrder_ = false;
    }
  } catch (...) {
    failure_ = std::current_exception();
  }
}

std::string BookWriter::linesInOrder(const std::string& text) const {
  std::string file(kHeader);
  for (const auto& line : lines_) file.append(text, line.begin, line.end - line.begin);
  return file;
}

Data BookWriter::finish() {
  if (failure_) std::rethrow_exception(failure_);
  bool withFiles = false;
  for (const auto& line : lines_) {
    if (!line.refusal.empty()) {
      failures::notice(FailureKind::Other, "the neutral book cannot be written: " + line.refusal);
      return nullptr;
    }
    withFiles = withFiles || line.holdsPictureFile;
  }
  auto file = out_.take();
  if (!areInOrder_) file = linesInOrder(file);
  if (withFiles) file.replace(0, kHeader.size(), kHeaderWithFiles);
  file += trailer(file, groups_.size(), persons_.size());
  return makeData(std::move(file));
}

}  // namespace ox
