#include "host/commands/commands.h"
#include "host/doctor/doctor.h"

namespace host {

void addDoctorCommand(CommandLine& line) {
    auto& command = line.add(
        {.name = "doctor",
         .description =
             "Looks at settings, plug-in file and servers, and says what is wrong and what to do. "
             "What the plug-in's interfaces cannot say (versions, indexes, sizes, keys) it asks "
             "the "
             "servers directly. It changes nothing. Ends with status 1 if there is a warning or an "
             "error, else with 0",
         .examples = "kelvro-host doctor\nkelvro-host doctor --json"},
        [](Session& session) {
            return runDoctor(session) ? ExitStatus::Done : ExitStatus::Failed;
        });
    line.addOutputOptions(command);
}

} // namespace host
