#pragma once

#include <CLI/CLI.hpp>

#include "oxcontacts/context.hpp"

namespace ox::program {

// Each declares a command, or a few that belong together, with its options. The command runs when
// its callback is called and ends in a CommandError unless it is done. The context is borrowed for
// the run.
void declareAccounts(CLI::App& program, const Context& context);
void declareImport(CLI::App& program, const Context& context);
void declareSync(CLI::App& program, const Context& context);
void declareBooks(CLI::App& program, const Context& context);
void declareConfig(CLI::App& program, const Context& context);
void declarePersons(CLI::App& program, const Context& context);
void declareShow(CLI::App& program, const Context& context);
void declareGroups(CLI::App& program, const Context& context);
void declareEdit(CLI::App& program, const Context& context);
void declareEditPersons(CLI::App& program, const Context& context);
void declareEditGroups(CLI::App& program, const Context& context);
void declareMembers(CLI::App& program, const Context& context);
void declareMerge(CLI::App& program, const Context& context);
void declareDuplicates(CLI::App& program, const Context& context);
void declareBirthdays(CLI::App& program, const Context& context);
void declareValues(CLI::App& program, const Context& context);
void declareTag(CLI::App& program, const Context& context);
void declarePage(CLI::App& program, const Context& context);
void declareQr(CLI::App& program, const Context& context);
void declareComplete(CLI::App& program, const Context& context);
void declareHelp(CLI::App& program, const Context& context);
void declareCopies(CLI::App& program, const Context& context);
void declareCopy(CLI::App& program, const Context& context);
void declarePhoto(CLI::App& program, const Context& context);
void declareExport(CLI::App& program, const Context& context);
void declareBackup(CLI::App& program, const Context& context);
void declareRestore(CLI::App& program, const Context& context);
void declareForget(CLI::App& program, const Context& context);
void declareLog(CLI::App& program, const Context& context);
void declareUndo(CLI::App& program, const Context& context);
void declareTrash(CLI::App& program, const Context& context);
void declareCheck(CLI::App& program, const Context& context);
void declareRecover(CLI::App& program, const Context& context);

// What a shell may offer for the last of the words behind `oxcontacts complete --`, a line each.
// That is no command of its own, since no word of it is meant for the parser.
void answerShell(const CLI::App& program, int argc, const char* const* argv);

}  // namespace ox::program
