// SPDX-License-Identifier: Apache-2.0
#include <sstream>

#include "scene/Words.h"
#include "tools/qx/describe/CommandFacts.h"

namespace qx::tool {
namespace {

/// Text that man takes for text: hyphens that can be copied, no line that begins with a request.
std::string plain(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool begins = i == 0 || text[i - 1] == '\n';
        if (begins && (text[i] == '.' || text[i] == '\'')) out += "\\&";
        if (text[i] == '\\') {
            out += "\\e";
        } else if (text[i] == '-') {
            out += "\\-";
        } else {
            out += text[i];
        }
    }
    return out;
}

void write_option(std::ostream& page, const OptionFacts& option, bool is_argument) {
    page << ".TP\n";
    if (is_argument) {
        page << "\\fI" << plain(option.value) << "\\fR\n";
    } else {
        page << "\\fB" << plain(scene::joined(option.names, ", ")) << "\\fR";
        if (!option.value.empty()) page << " \\fI" << plain(option.value) << "\\fR";
        page << '\n';
    }
    page << plain(option.help) << '\n';
}

void write_command(std::ostream& page, const CommandFacts& command) {
    page << ".SS " << plain(command.name) << '\n'
         << plain(command.help) << ".\n.PP\n.B " << plain(command.usage) << '\n';
    for (const OptionFacts& argument : command.arguments) write_option(page, argument, true);
    for (const OptionFacts& option : command.options) write_option(page, option, false);
    if (!command.footer.empty()) page << ".PP\n.nf\n" << plain(command.footer) << "\n.fi\n";
}

constexpr const char* kEnd = R"(.SH ENVIRONMENT
.TP
.B QX_THREADS, QX_BANDS
what \fB\-\-threads\fR and \fB\-\-bands\fR are without the option
.TP
.B QX_EFFECT_PATH
folders of effects, with colons between, before that of the installation
.SH EXIT STATUS
0 done; 1 the work failed, or \fBdiff\fR found a difference; 2 wrong usage, or \fBdiff\fR could not compare; 5 some
frames failed, with \fB\-\-keep\-going\fR; 130 interrupted. No half\-written file is left.
.SH SEE ALSO
The documents of the package: a guide in ten steps, recipes, scene files, colour, frames between frames, effects.
)";

}  // namespace

std::string man_page(const std::string& version, const std::vector<CommandFacts>& commands) {
    std::ostringstream page;
    page << ".TH QX 1 \"\" \"qx " << version
         << "\" \"User commands\"\n.SH NAME\nqx \\- composites, retimes, filters and "
         << "converts pictures and clips, exact to the bit\n.SH SYNOPSIS\n.B qx\n.I SUBCOMMAND\n[options]\n.PP\n.B qx "
            "help\n"
         << ".RI [ SUBCOMMAND ]\n.SH SUBCOMMANDS\n";
    for (const CommandFacts& command : commands) write_command(page, command);
    page << kEnd;
    return page.str();
}

}  // namespace qx::tool
