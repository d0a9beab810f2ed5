#include "tests/oxcontacts/program.hpp"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "tests/support/store_environment.hpp"

namespace ox::program_tests {

std::vector<std::string> programCommand(const std::vector<std::string>& arguments) {
  std::vector<std::string> command{OX_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

ProcessResult run(const std::vector<std::string>& arguments) {
  return support::runProcess(programCommand(arguments));
}

Json runJson(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "--json");
  const auto result = run(arguments);
  auto json = Json::parse(result.output, nullptr, false);
  if (!json.is_discarded()) return json;
  return "exit code " + std::to_string(result.exitCode) + ": " + result.errors;
}

ProcessResult runShell(const std::string& script) {
  return support::runProcess({"/bin/sh", "-c", script}, "", {std::string("OX=") + OX_PROGRAM});
}

bool waitsIn(pid_t process, const std::vector<long>& calls) {
  for (int i = 0; i < 5000; ++i) {
    std::ifstream file("/proc/" + std::to_string(process) + "/syscall");
    long number = -1;
    if (!(file >> number)) number = -1;
    if (std::find(calls.begin(), calls.end(), number) != calls.end()) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

std::map<std::string, std::string> personIds() {
  std::map<std::string, std::string> ids;
  for (const auto& person : runJson({"persons"})) ids[person["displayName"]] = person["ID"];
  return ids;
}

std::string card(const std::vector<std::string>& lines) {
  std::string text = "BEGIN:VCARD\r\nVERSION:3.0\r\n";
  for (const auto& line : lines) text += line + "\r\n";
  return text + "END:VCARD\r\n";
}

std::string countsOf(const Json& report) {
  if (!report.is_object()) return report.dump();
  std::string text;
  for (const auto& [name, count] : report.items()) {
    if (!count.is_number() || count == 0) continue;
    text += (text.empty() ? "" : ", ") + name + " " + count.dump();
  }
  return text;
}

void makeStore(const std::string& path) {
  std::vector<std::string> arguments = {"import", support::temporaryFile("nobody.vcf", "")};
  if (!path.empty()) arguments.insert(arguments.begin(), {"--store", path});
  run(arguments);  // which says that nobody is in that file
}

}  // namespace ox::program_tests
