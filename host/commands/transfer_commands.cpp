#include "host/command_line/text_options.h"
#include "host/commands/commands.h"
#include "host/transfer/export.h"
#include "host/transfer/import.h"

#include <memory>

namespace host {

void addTransferCommands(CommandLine& line) {
    const auto folder = std::make_shared<QString>();
    auto& exporting = line.add(
        {.name = "export",
         .description =
             "Writes all stores to a folder of JSON lines, to be imported at another server. It "
             "asks "
             "the servers directly: every collection of the plug-in's database, as canonical "
             "extended JSON, and every key of its three Redis databases. What has no text that "
             "reads "
             "back to the same bytes is written in base64. While others write, it is no picture of "
             "one instant: what is stored, changed or deleted meanwhile may be in it or not. It "
             "needs memory for the largest record. The same command goes on with an export that "
             "was "
             "broken off: stores that are whole are kept, the others begun anew",
         .examples = "kelvro-host export /var/backups/kelvro-2026-11-22"},
        [folder](Session& session) {
            return runExport(*folder, session) ? ExitStatus::Done : ExitStatus::Failed;
        });
    addFile(exporting, "FOLDER", *folder, "Where to; is made, or has part of an export")
        ->required();
    line.addOutputOptions(exporting);

    const auto options = std::make_shared<ImportOptions>();
    auto& importing = line.add(
        {.name = "import",
         .description =
             "Stores what `export` has written, byte by byte the same. All files are checked "
             "before "
             "anything is stored. The plug-in lays out collections and indexes; the records go "
             "directly to the servers. Keys go to the databases that the settings name for them. "
             "Ends with status 1 if a store has fewer records afterwards than it should have",
         .examples = "kelvro-host import /var/backups/kelvro-2026-11-22\n"
                     "kelvro-host import --merge /var/backups/kelvro-2026-11-22"},
        [options](Session& session) {
            return runImport(*options, session) ? ExitStatus::Done : ExitStatus::Failed;
        });
    addFile(importing, "FOLDER", options->folder, "A finished export")->required();
    auto* const merge = importing.add_flag(
        "--merge", options->merge,
        "Into stores that are not empty, also to go on with an import that was broken off; records "
        "that are there already stay as they are and are counted");
    importing
        .add_flag("--replace", options->replace,
                  "As --merge, but records that are there with other content are replaced")
        ->excludes(merge);
    line.addOutputOptions(importing);
}

} // namespace host
