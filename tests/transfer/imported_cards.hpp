#pragma once

#include <string>

#include "ox/transfer/importer.hpp"

// Cards that imports are tried on, and what an import made of them.
namespace ox::vcard {

inline std::string cardOf(const std::string& uid, const std::string& name) {
  return "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:" + uid + "\r\nN:;" + name + ";;;\r\nFN:" + name +
         "\r\nEND:VCARD\r\n";
}

inline std::string manyCards(int count) {
  std::string text;
  for (int i = 0; i < count; ++i) text += cardOf("u" + std::to_string(i), "P" + std::to_string(i));
  return text;
}

inline std::string countsOf(const ImportReport& report) {
  return std::to_string(report.cards) + " = " + std::to_string(report.added) + " + " +
         std::to_string(report.updated) + " + " + std::to_string(report.skipped) + " + " +
         std::to_string(report.refused) + " + " + std::to_string(report.groups);
}

}  // namespace ox::vcard
