// SPDX-License-Identifier: MIT
// vireo completion prints a script for a shell; the script asks vireo complete at each press of Tab.
#include "app/commands/commands.h"
#include "app/commands/completed_words.h"

#include <iostream>
#include <memory>

namespace vireo {
namespace {

struct Script {
    const char* shell;
    const char* text;
};

// Bash breaks words at colons and equals signs and replaces only what stands behind the last of them.
constexpr Script scripts[] = {
    {"bash", R"script(# bash completion for vireo
_vireo() {
    local line=${COMP_LINE:0:COMP_POINT} piece=${COMP_WORDS[COMP_CWORD]} head= kind candidate
    local word=${line##*[[:space:]]}
    case $piece in
        [\"\']*) ;;
        [:=]*) head=$word ;;
        *) head=${word%"$piece"} ;;
    esac
    COMPREPLY=()
    {
        read -r kind
        while IFS=$'\t' read -r candidate _; do COMPREPLY+=("${candidate#"$head"}"); done
    } < <("${COMP_WORDS[0]}" complete "$line" 2>/dev/null)
    case $kind in
        files) compopt -o default ;;
        folders) compopt -o dirnames ;;
    esac
    [[ ${#COMPREPLY[@]} != 1 || ${COMPREPLY[0]} != *[:=] ]] || compopt -o nospace
}
complete -F _vireo vireo
)script"},
    {"zsh", R"script(#compdef vireo
# zsh completion for vireo
_vireo() {
    local line value kind
    local -a lines open open_shown closed closed_shown
    lines=("${(@f)$(${(Q)words[1]} complete "${(j: :)words[1,CURRENT]}" 2>/dev/null)}")
    kind=$lines[1]
    for line in "${(@)lines[2,-1]}"; do
        value=${line%%$'\t'*}
        if [[ $value == *[:=] ]]; then
            open+=("$value") open_shown+=("${value}  ${line#*$'\t'}")
        else
            closed+=("$value") closed_shown+=("${value}  ${line#*$'\t'}")
        fi
    done
    (( $#open )) && compadd -U -l -S '' -d open_shown -a open
    (( $#closed )) && compadd -U -l -d closed_shown -a closed
    case $kind in
        files) _files ;;
        folders) _files -/ ;;
    esac
}
if [[ $funcstack[1] == _vireo ]]; then _vireo "$@"; else compdef _vireo vireo; fi
)script"},
    {"fish", R"script(# fish completion for vireo
function __vireo_complete
    set -l words (commandline -op)
    set -l lines ($words[1] complete (commandline -cp | string collect) 2>/dev/null)
    switch "$lines[1]"
        case files
            __fish_complete_path (commandline -ct)
        case folders
            __fish_complete_directories (commandline -ct) ''
    end
    test (count $lines) -gt 1; and printf '%s\n' $lines[2..-1]
end
complete -c vireo -f -a '(__vireo_complete)'
)script"},
    {"powershell", R"script(# PowerShell completion for vireo
Register-ArgumentCompleter -Native -CommandName vireo, vireo.exe -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $line = $commandAst.Extent.Text
    $typed = $cursorPosition - $commandAst.Extent.StartOffset
    $line = if ($typed -gt $line.Length) { "$line " } else { $line.Substring(0, $typed) }
    $line = $line.Replace('\', '\\')
    if ($PSNativeCommandArgumentPassing -notin 'Windows', 'Standard') {
        $line = $line -replace '(\\*)"', '$1$1\"' -replace '(\\+)$', '$1$1'
    }
    $kind, $candidates = & $commandAst.CommandElements[0].Value complete $line 2>$null
    foreach ($candidate in $candidates) {
        $word, $description = $candidate -split "`t", 2
        $text = if ($word -match '[^\w.:=/+%-]') { "'" + $word.Replace("'", "''") + "'" } else { $word }
        $tip = if ($description) { $description } else { $word }
        [System.Management.Automation.CompletionResult]::new($text, $word, 'ParameterValue', $tip)
    }
    if ($kind -in 'files', 'folders') {
        [System.Management.Automation.CompletionCompleters]::CompleteFilename($wordToComplete) |
            Where-Object { $kind -eq 'files' -or $_.ResultType -eq 'ProviderContainer' }
    }
}
)script"},
};

void printCompletions(const Completions& completions) {
    switch (completions.files) {
        case Completions::Files::None: std::cout << "words\n"; break;
        case Completions::Files::Any: std::cout << "files\n"; break;
        case Completions::Files::Folders: std::cout << "folders\n"; break;
    }
    for (const Completion& completion : completions.words)
        std::cout << completion.word << '\t' << completion.description << '\n';
}

void addQueryCommand(CommandSet& commands) {
    const auto line = std::make_shared<std::string>();
    // No description: the scripts call it, people do not.
    CLI::App& command = commands.add("complete", "", [line, &program = commands.program()](Session& session) {
        printCompletions(completionsOf(program, session, *line));
        return 0;
    });
    command.add_option("line", *line, "The line up to the cursor")->required()->type_name("LINE");
}

}  // namespace

void addCompletionCommand(CommandSet& commands) {
    const auto shell = std::make_shared<std::string>();
    CLI::App& command =
        commands.add("completion", "Print the completion script of a shell", [shell](Session&) {
            for (const Script& script : scripts) {
                if (*shell == script.shell) std::cout << script.text;
            }
            return 0;
        });
    command.add_option("shell", *shell, "The shell that the script is for")
        ->required()
        ->check(oneOf({"bash", "zsh", "fish", "powershell"}))
        ->type_name("bash|zsh|fish|powershell");
    command.footer(R"help(Examples:
  source <(vireo completion bash)                 for this session; an installation has it for all
  vireo completion zsh > ~/.zfunc/_vireo          a folder of $fpath
  vireo completion fish > ~/.config/fish/completions/vireo.fish
  vireo completion powershell | Out-String | Invoke-Expression
                                                  in $PROFILE)help");
    addQueryCommand(commands);
}

}  // namespace vireo
