// SPDX-License-Identifier: Apache-2.0
#include <sstream>

#include "scene/Words.h"
#include "tools/qx/describe/CommandFacts.h"

namespace qx::tool {
namespace {

std::string command_names(const std::vector<CommandFacts>& commands) {
    std::string names;
    for (const CommandFacts& command : commands) names += command.name + " ";
    return names + "help version";
}

std::vector<std::string> option_names(const CommandFacts& command) {
    std::vector<std::string> names;
    for (const OptionFacts& option : command.options)
        names.insert(names.end(), option.names.begin(), option.names.end());
    return names;
}

/// In single quotes of a shell.
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

/// Cases of both shells that share their language: what may follow an option of a subcommand, and its options.
void write_cases(std::ostream& script, const std::vector<CommandFacts>& commands) {
    script << "    case \"$command $before\" in\n";
    for (const CommandFacts& command : commands) {
        for (const OptionFacts& option : command.options) {
            if (option.value.empty()) continue;
            for (std::size_t i = 0; i < option.names.size(); ++i) {
                script << (i == 0 ? "        " : "|") << "\"" << command.name << " " << option.names[i] << "\"";
            }
            script << ") words=" << quoted(scene::joined(option.words, " "))
                   << "; files=" << (option.takes_file ? 1 : 0) << "; return ;;\n";
        }
    }
    script << "    esac\n    case \"$command\" in\n        '') words=" << quoted(command_names(commands))
           << "; files=0 ;;\n        help) words=" << quoted(command_names(commands)) << "; files=0 ;;\n";
    for (const CommandFacts& command : commands) {
        script << "        " << command.name << ") words=" << quoted(scene::joined(option_names(command), " "))
               << "; files=1 ;;\n";
    }
    script << "    esac\n";
}

}  // namespace

std::string bash_completion(const std::vector<CommandFacts>& commands) {
    std::ostringstream script;
    script << "# Completions of qx for bash, made by `qx generate bash`.\n_qx_words() {\n";
    write_cases(script, commands);
    script << R"(}
_qx() {
    local words= files=0 command= before="${COMP_WORDS[COMP_CWORD-1]}" now="${COMP_WORDS[COMP_CWORD]}"
    [ "$COMP_CWORD" -gt 1 ] && command="${COMP_WORDS[1]}"
    _qx_words
    if [ "$files" = 1 ] && [ "${now#-}" = "$now" ]; then COMPREPLY=($(compgen -W "$words" -- "$now") $(compgen -f -- "$now"))
    else COMPREPLY=($(compgen -W "$words" -- "$now")); fi
}
complete -o filenames -F _qx qx
)";
    return script.str();
}

std::string zsh_completion(const std::vector<CommandFacts>& commands) {
    std::ostringstream script;
    script << "#compdef qx\n# Completions of qx for zsh, made by `qx generate zsh`.\n_qx_words() {\n";
    write_cases(script, commands);
    script << R"(}
_qx() {
    local command= before="${words[CURRENT-1]}"
    (( CURRENT > 2 )) && command="${words[2]}"
    () { local words= files=0; _qx_words; compadd -- ${=words}; if (( files )); then _files; fi; }
}
(( $+functions[compdef] )) && compdef _qx qx
)";
    return script.str();
}

std::string fish_completion(const std::vector<CommandFacts>& commands) {
    std::ostringstream script;
    script << "# Completions of qx for fish, made by `qx generate fish`.\n";
    script << "complete -c qx -n __fish_use_subcommand -f -a 'help version'\n";
    for (const CommandFacts& command : commands) {
        script << "complete -c qx -n __fish_use_subcommand -f -a " << command.name << " -d " << quoted(command.help)
               << "\n";
        for (const OptionFacts& option : command.options) {
            script << "complete -c qx -n '__fish_seen_subcommand_from " << command.name << "'";
            for (const std::string& name : option.names) {
                script << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
            }
            if (!option.value.empty()) script << (option.takes_file ? " -r" : " -x");
            if (!option.words.empty()) script << " -a " << quoted(scene::joined(option.words, " "));
            script << " -d " << quoted(option.help) << "\n";
        }
    }
    return script.str();
}

}  // namespace qx::tool
