"""Completion of bash and zsh."""

import pathlib
import re

from manpages import choices, placeholder

FILES = {"FILE": "file", "PICTURE": "file", "OUT": "file", "DIR": "directory", "TYPE": "type", "PATH": "file"}
ZSH_ACTIONS = {"file": "_files", "directory": "_files -/", "recording": "_files -g '*.(rec|tmp)(-.)'"}


def kind_of(program, option):
    """What stands in the place of a value: "words A B", type, recorder, file, directory, recording or any."""
    if choices(option):
        return "words " + " ".join(choices(option))
    if option["positional"]:
        if option["positional"] == "DIR":
            return "directory"
        takes_file = option["positional"] in ("FILE", "PATH", "STATION")
        return ("file" if program == "recstation" else "recording") if takes_file else "any"
    if program == "recstation" and option["names"] == ["--record"]:
        return "recorder"
    return FILES.get(placeholder(option), "any")


def names_of(options):
    return [name for option in options for name in option["names"]]


def operand_of(program, options):
    return next((kind_of(program, option) for option in options if option["positional"]), "")


def commands_of(tree, path=(), parent=None):
    """Every command with its path, what options it takes, and where commands behind it begin."""
    path = (*path, tree["name"])
    inherits = parent is not None and parent["inheritsOptions"]
    options = tree["options"] + ([option for option in parent["options"] if option["names"] and "--help" not in option["names"]] if inherits else [])
    verbs = [command["name"] for command in (parent if inherits else tree)["commands"]]
    yield path, options, verbs, path[:-1] if inherits else path
    for command in tree["commands"]:
        yield from commands_of(command, path, tree)


def for_bash(tree):
    program = tree["name"]
    commands, values = [], []
    for path, options, verbs, base in commands_of(tree):
        call = " ".join(path)
        operand = operand_of(program, options)
        if program == "rectool" and len(path) == 1:
            operand = "recording"  # "rectool FILE" is "rectool info FILE"
        commands.append(f"        '{call}') base='{' '.join(base)}' verbs='{' '.join(verbs)}' operand='{operand}' "
                        f"options='{' '.join(names_of(options))}' ;;")
        for option in options:
            if option["takesValue"] and option["names"]:
                patterns = " | ".join(f"'{call} {name}'" for name in option["names"])
                values.append(f"        {patterns}) kind='{kind_of(program, option)}' ;;")
    text = (pathlib.Path(__file__).parent / "program.bash").read_text(encoding="utf-8")
    return text.replace("@COMMANDS@", "\n".join(commands)).replace("@VALUES@", "\n".join(values)).replace("@PROGRAM@", program)


def quoted(text):
    return "'" + text.replace("'", "'\\''") + "'"


def in_zsh(text):
    return text.replace(":", "\\:")


def short_help(text):
    first = re.split(r"[.;(] ?", text)[0].split(":")[0].strip()
    return first.replace("[", "\\[").replace("]", "\\]")


def zsh_action(program, option):
    kind = kind_of(program, option)
    if kind.startswith("words "):
        return f"({kind[6:]})"
    return ZSH_ACTIONS.get(kind, {"type": "_recording_types", "recorder": "_recorders"}.get(kind, " "))


def zsh_specs(program, options):
    specs = []
    for option in options:
        if option["positional"]:
            many = "*" if option["many"] else ""
            specs.append(quoted(f"{many}:{in_zsh(option['positional'])}:{zsh_action(program, option)}"))
            continue
        value = f":{in_zsh(placeholder(option))}:{zsh_action(program, option)}" if option["takesValue"] else ""
        others = "*" if option["repeated"] else "(" + " ".join(option["names"] + [name for name in option["excludes"] if name.startswith("-")]) + ")"
        for name in option["names"]:
            takes = ("=" if name.startswith("--") else "+") if value else ""
            specs.append(quoted(f"{others}{name}{takes}[{short_help(option['help'])}]{value}"))
    return specs


ZSH_VALUES = """_recording_types() {
  local recording=${(Q)${(M)words:#*.(rec|tmp)}[-1]}
  [[ -n $recording ]] || return 1
  local -a types=(${(f)"$(rectool types ${~recording} 2>/dev/null | awk 'NR > 1 && $2 ~ /^[A-Za-z0-9_]+$/ { print $2 }')"})
  compadd -M 'm:{a-z}={A-Z}' -a types
}

_recorders() {
  local at=${words[(I)--config]}
  (( at )) || return 1
  compadd -- $(sed -n 's/^ *\\[\\([A-Za-z0-9_-]*\\)\\].*/\\1/p' ${(Q)~words[at + 1]} 2>/dev/null)
}
"""


def zsh_function(program, tree, path):
    """A command with commands: the first word decides who completes the rest."""
    name = "_" + "_".join(path)
    lines = [f"{name}() {{"]
    specs = zsh_specs(program, tree["options"])
    if not tree["commands"]:
        return lines + ["  _arguments -s \\", "    " + " \\\n    ".join(specs), "}", ""]
    verbs = " ".join(quoted(f"{command['name']}:{short_help(command['help'])}") for command in tree["commands"])
    lines += ["  local curcontext=$curcontext state line", "  typeset -A opt_args", "  _arguments -C \\",
              "    " + " \\\n    ".join(specs + [quoted("1: :->command"), quoted("*:: :->rest")]),
              "  case $state in", "    command)", f"      local -a commands=({verbs})", "      _describe command commands"]
    lines += ["      _files -g '*.(rec|tmp)(-.)'"] if program == "rectool" and len(path) == 1 else []
    lines += ["      ;;", "    rest)", "      case $line[1] in"]
    lines += [f"        {command['name']}) {name}_{command['name']} ;;" for command in tree["commands"]]
    lines += ["      esac", "      ;;", "  esac", "}", ""]
    for command in tree["commands"]:
        lines += zsh_function(program, command, (*path, command["name"]))
    return lines


def zsh_of_several(program, tree):
    """Commands that may follow one another, with the options of the program among theirs."""
    names = [command["name"] for command in tree["commands"]]
    verbs = " ".join(quoted(f"{command['name']}:{short_help(command['help'])}") for command in tree["commands"])
    lines = [f"_{program}_operand() {{", f"  local -a commands=({verbs})", "  _describe command commands", "  _files", "}", "",
             f"_{program}() {{", "  local -a specs=(", "    " + "\n    ".join(zsh_specs(program, [option for option in tree["options"] if option["names"]])), "  )",
             f"  case ${{${{(M)words[2,CURRENT-1]:#({'|'.join(names)})}}[-1]}} in"]
    for command in tree["commands"]:
        own = [option for option in command["options"] if option["names"] and "--help" not in option["names"]]
        lines += [f"    {command['name']}) specs+=(", "      " + "\n      ".join(zsh_specs(program, own)), "    ) ;;"]
    return lines + ["  esac", f"  _arguments -s $specs '*: :_{program}_operand'", "}", ""]


def for_zsh(tree):
    program = tree["name"]
    body = zsh_of_several(program, tree) if tree["inheritsOptions"] else zsh_function(program, tree, (program,))
    return f"#compdef {program}\n# Made of what {program} takes on its command line.\n\n{ZSH_VALUES}\n" + "\n".join(body) + f'\n_{program} "$@"\n'
