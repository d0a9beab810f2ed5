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

constexpr std::size_t kFlushedBytes = 1U << 18U;

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

void BookWriter::add(std::string_view key, const OxGeneralGroup& group) {
  assert(persons_ == 0);
  write([&] {
    writeGroup(out_, key, group);
    ++groups_;
  });
}

void BookWriter::add(std::string_view key, const OxGeneralPerson& person) {
  write([&] {
    withFiles_ = withFiles_ || holdsPictureFile(person);
    writePerson(out_, key, person);
    ++persons_;
  });
}

void BookWriter::addGroup(const std::shared_ptr<IOxGroup>& group) {
  if (!goesOn()) return;
  auto identifier = group ? group->ID() : std::nullopt;
  if (identifier) add(validUtf8(*std::move(identifier)), *OxGeneralGroup::copyOf(*group));
}

void BookWriter::addPerson(const std::shared_ptr<IOxPerson>& person) {
  if (!person || !goesOn()) return;
  const auto copy = OxGeneralPerson::copyOf(*person);
  if (const auto identifier = copy->ID()) add(*identifier, *copy);
}

template <typename Write>
void BookWriter::write(Write write) {
  if (!goesOn()) return;
  try {
    write();
    if (out_.text().size() >= kFlushedBytes) flush();
  } catch (...) {
    failure_ = std::current_exception();
  }
}

void BookWriter::flush() {
  if (!std::exchange(hasBegun_, true)) {
    sink_.append(kHeader);
    sum_.add(kHeader);
    sumWithFiles_.add(kHeaderWithFiles);
  }
  sink_.append(out_.text());
  sum_.add(out_.text());
  sumWithFiles_.add(out_.text());
  out_.clear();
}

bool BookWriter::finish() {
  try {
    if (failure_) std::rethrow_exception(failure_);
  } catch (const Unwritable& reason) {
    failures::notice(FailureKind::Other,
                     std::string("the neutral book cannot be written: ") + reason.what());
    return false;
  }
  flush();
  sink_.append(trailerOf((withFiles_ ? sumWithFiles_ : sum_).text(), groups_, persons_));
  if (withFiles_) sink_.replaceStart(kHeaderWithFiles);
  return true;
}

}  // namespace ox
