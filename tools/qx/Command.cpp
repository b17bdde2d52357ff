// SPDX-License-Identifier: Apache-2.0
#include <CLI/CLI.hpp>
#include <cstdio>

#include "tools/qx/Commands.h"
#include "tools/qx/Messages.h"
#include "tools/qx/io/Interrupt.h"
#include "tools/qx/io/Picture.h"

namespace qx::tool {
namespace {

int parse_and_run(CLI::App& app, int argc, const char* const* argv) {
    const std::string first = argc > 1 ? argv[1] : "-";
    const auto known = app.get_subcommands([&](const CLI::App* command) { return command->get_name() == first; });
    if (first[0] != '-' && known.empty()) {
        throw WrongUsage(first + ": no such subcommand (see qx --help)");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) {  // --help, --version
        app.exit(success);
        return std::fflush(stdout) == 0 ? kDone : kWorkFailed;
    } catch (const CLI::ParseError& error) {
        throw WrongUsage(std::string(error.what()) + " (see qx --help)");
    }
    return kDone;
}

}  // namespace

int run_command(int argc, const char* const* argv) {
    io::install_signal_handlers();
    try {
        CLI::App app("Composites pictures, exact to the bit.", "qx");
        app.set_version_flag("--version", "qx " QX_VERSION);
        app.require_subcommand(1);
        add_comp(app);
        add_modes(app);
        add_info(app);
        return parse_and_run(app, argc, argv);
    } catch (const io::Interrupted&) {
        say_error("interrupted");
        return kInterruptedStatus;
    } catch (const WrongUsage& fault) {
        say_error(fault.what());
        return kWrongUsage;
    } catch (const std::bad_alloc&) {
        say_error("out of memory");
    } catch (const std::exception& fault) {
        say_error(fault.what());
    } catch (int code) {
        say_error("failed: " + last_report() + " (code " + std::to_string(code) + ")");
    }
    return kWorkFailed;
}

}  // namespace qx::tool
