#include "ox/sync/dav/service_records.hpp"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ox::sync;

namespace {

using Bytes = std::vector<std::uint8_t>;

void addNumber(Bytes& bytes, unsigned number) {
  bytes.push_back(static_cast<std::uint8_t>(number >> 8));
  bytes.push_back(static_cast<std::uint8_t>(number & 255));
}

// "a.b" as labels with their lengths; empty: the root.
void addName(Bytes& bytes, const std::string& name) {
  std::size_t from = 0;
  while (from < name.size()) {
    const auto end = std::min(name.find('.', from), name.size());
    bytes.push_back(static_cast<std::uint8_t>(end - from));
    bytes.insert(bytes.end(), name.begin() + static_cast<std::ptrdiff_t>(from),
                 name.begin() + static_cast<std::ptrdiff_t>(end));
    from = end + 1;
  }
  bytes.push_back(0);
}

Bytes service(unsigned priority, unsigned weight, unsigned port, const std::string& host) {
  Bytes data;
  for (const auto number : {priority, weight, port}) addNumber(data, number);
  addName(data, host);
  return data;
}

Bytes texts(const std::vector<std::string>& strings) {
  Bytes data;
  for (const auto& text : strings) {
    data.push_back(static_cast<std::uint8_t>(text.size()));
    data.insert(data.end(), text.begin(), text.end());
  }
  return data;
}

struct Record {
  unsigned type;  // 33: SRV, 16: TXT
  Bytes data;
};

// An answer of a name server (RFC 1035, section 4) with one question.
Bytes message(const std::vector<Record>& records) {
  Bytes bytes;
  for (const unsigned number : {7U, 0x8180U, 1U, static_cast<unsigned>(records.size()), 0U, 0U}) {
    addNumber(bytes, number);
  }
  addName(bytes, "_carddavs._tcp.example.org");
  addNumber(bytes, 33);
  addNumber(bytes, 1);
  for (const auto& record : records) {
    addNumber(bytes, 0xC00C);  // the name of the question
    addNumber(bytes, record.type);
    addNumber(bytes, 1);
    addNumber(bytes, 0);
    addNumber(bytes, 60);
    addNumber(bytes, static_cast<unsigned>(record.data.size()));
    bytes.insert(bytes.end(), record.data.begin(), record.data.end());
  }
  return bytes;
}

}  // namespace

TEST(ServiceRecords, AreOrderedByPriorityAndWeight) {
  const auto records = serviceRecordsIn(message({{33, service(20, 0, 8443, "c.example.org")},
                                                 {33, service(10, 5, 443, "b.example.org")},
                                                 {33, service(10, 50, 443, "A.Example.org")}}));
  EXPECT_EQ(records.targets,
            (std::vector<ServiceRecords::Target>{
                {"a.example.org", 443}, {"b.example.org", 443}, {"c.example.org", 8443}}));
  EXPECT_EQ(records.path, "");
}

TEST(ServiceRecords, HaveThePathOfTheText) {
  EXPECT_EQ(serviceRecordsIn(message({{16, texts({"txtvers=1", "path=/dav/"})}})).path, "/dav/");
  EXPECT_EQ(serviceRecordsIn(message({{16, texts({"", "PATH=/x"})}})).path, "/x");
  EXPECT_EQ(serviceRecordsIn(message({{16, texts({"path=//other.example"})}})).path,
            "//other.example");
  EXPECT_EQ(serviceRecordsIn(message({{16, texts({"path=dav"})}})).path, "");
}

TEST(ServiceRecords, PassOverTheRootAndWhatIsNoHost) {
  EXPECT_EQ(serviceRecordsIn(message({{33, service(0, 0, 0, "")},
                                      {33, service(0, 0, 443, "")},
                                      {33, service(0, 0, 443, "a b/c.example")},
                                      {33, Bytes{0, 1, 2}}})),
            ServiceRecords());
}

TEST(ServiceRecords, AreNoneInWhatIsCutAnywhere) {
  const auto whole = message({{33, service(10, 5, 443, "b.example.org")}});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_EQ(serviceRecordsIn(std::span(whole).first(length)), ServiceRecords()) << length;
  }
}
