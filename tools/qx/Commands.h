// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace CLI {
class App;
}

namespace qx::tool {

/// Each adds its subcommand with its options; what it does runs when the command line has been read.
void add_comp(CLI::App& app);
void add_convert(CLI::App& app);
void add_diff(CLI::App& app);
void add_hash(CLI::App& app);
void add_identify(CLI::App& app);
void add_sheet(CLI::App& app);
void add_guess_alpha(CLI::App& app);
void add_blur(CLI::App& app);
void add_matte(CLI::App& app);
void add_convolve(CLI::App& app);
void add_adjust(CLI::App& app);
void add_blend(CLI::App& app);
void add_profile(CLI::App& app);
void add_render(CLI::App& app);
void add_view(CLI::App& app);
void add_retime(CLI::App& app);
void add_flow(CLI::App& app);
void add_cache(CLI::App& app);
void add_effects(CLI::App& app);
void add_modes(CLI::App& app);
void add_info(CLI::App& app);
void add_generate(CLI::App& app);

/// Reads the command line, runs the subcommand, says what went wrong. @return exit status
int run_command(int argc, const char* const* argv);

}  // namespace qx::tool
