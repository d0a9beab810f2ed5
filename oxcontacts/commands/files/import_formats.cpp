#include "oxcontacts/commands/files/import_formats.hpp"

#include "ox/transfer/table_columns.hpp"
#include "oxcontacts/output/json.hpp"
#include "oxcontacts/output/table.hpp"

namespace ox::program {

void declareFormat(CLI::App& command, vcard::FileFormat& format) {
  const auto choose = [&format](const std::string& word) {
    format = word == "csv"    ? vcard::FileFormat::Csv
             : word == "ldif" ? vcard::FileFormat::Ldif
                              : vcard::FileFormat::VCard;
  };
  command
      .add_option_function<std::string>(
          "--format", choose,
          "What the files hold (else as their names end: .csv, .tsv, .ldif, .ldf, or vCards)")
      ->check(CLI::IsMember({"vcard", "csv", "ldif"}))
      ->type_name("FORMAT");
}

void printColumns(const Context& context, const std::vector<std::string>& files,
                  vcard::FileFormat format) {
  Json list = Json::array();
  for (const auto& file : files) {
    if (vcard::formatOfFile(file, format) != vcard::FileFormat::Csv) continue;
    Table table({{"COLUMN OF " + file}, {"BECOMES"}});
    for (const auto& [column, becomes] : formats::tableColumns(file)) {
      table.addRow({column, becomes});
      list.push_back({{"file", file}, {"column", column}, {"becomes", becomes}});
    }
    if (!context.json) table.print(context);
  }
  if (context.json) printJson(list);
}

}  // namespace ox::program
