#include <memory>

#include "tnl/cli/commands.h"
#include "tnl/cli/doctor.h"
#include "tnl/common/output_file.h"

namespace cli {

void add_doctor(CLI::App& app, command_list& commands) {
    const auto json = std::make_shared<bool>(false);
    CLI::App* doctor = app.add_subcommand("doctor", "Tell whether all that tnl needs is there and works");
    doctor->add_flag("--json", *json, "As JSON");
    doctor->footer("Exit status 0 when all that is needed works, else 5.");
    commands.push_back({doctor, [json] {
                            const terminal t = this_terminal();
                            const std::vector<finding> findings = examine(own_installation(), TNL_VERSION, t);
                            write_output("-", *json ? findings_json(findings) : findings_text(findings, t.colour));
                            return is_well(findings) ? good : file_fault;
                        }});
}

}  // namespace cli
