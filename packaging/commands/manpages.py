"""Man pages: one for a program, one for each of its commands."""

import gzip
import re

EXAMPLES = re.compile(r"Examples?:$")
EXIT_CODES = re.compile(r"Exit codes: ")
REFERENCE = re.compile(r"(?<![\w-])(--?[A-Za-z][\w-]*)")


def literal(text):
    """Text that is shown as it is: what a user types."""
    text = text.replace("\\", "\\e").replace("-", "\\-")
    return "\\&" + text if text.startswith((".", "'")) else text


def prose(text):
    """A sentence; options in it keep their hyphens."""
    text = text.replace("\\", "\\e")
    text = REFERENCE.sub(lambda match: match.group(1).replace("-", "\\-"), text)
    return "\\&" + text if text.startswith((".", "'")) else text


def sentence(text):
    return text if text.endswith((".", ":")) else text + "."


def footer_parts(footer):
    """The paragraphs of the help's end: remarks, examples, exit codes."""
    parts = {"remarks": [], "examples": [], "codes": []}
    into = "remarks"
    for line in footer.splitlines():
        if EXAMPLES.match(line):
            into = "examples"
        elif EXIT_CODES.match(line):
            into = "codes"
            parts[into].append(EXIT_CODES.sub("", line))
        elif into == "codes":
            ended = parts[into][-1].endswith(".")
            into = "remarks" if ended else into
            parts[into].append(line)
        elif into == "examples" and line and not line.startswith(" "):
            into = "remarks"
            parts[into].append(line)
        else:
            parts[into].append(line)
    return parts


def paragraphs(lines):
    """Sentences are filled, indented lines stay as they are."""
    result, verbatim = [], False
    for line in lines:
        if line.startswith(" ") != verbatim and line:
            verbatim = not verbatim
            result.append(".nf\n.RS" if verbatim else ".RE\n.fi")
        if not line:
            result.append(".PP" if not verbatim else "")
        else:
            result.append(literal(line.strip()) if verbatim else prose(line))
    if verbatim:
        result.append(".RE\n.fi")
    while result and result[0] == ".PP":
        result.pop(0)
    while result and result[-1] in (".PP", ""):
        result.pop()
    return [line for at, line in enumerate(result) if line != ".PP" or result[at - 1] != ".PP"]


def example_lines(lines):
    kept = [line[2:] if line.startswith("  ") else line for line in lines]
    while kept and not kept[-1]:
        kept.pop()
    return [".nf", *(literal(line) for line in kept), ".fi"]


def exit_codes(lines):
    pieces = re.split(r"(?:^|,\s)(\d)\s", " ".join(lines))[1:]
    result = []
    for code, meaning in zip(pieces[::2], pieces[1::2]):
        result += [".TP", f".B {code}", sentence(prose(meaning[:1].upper() + meaning[1:]))]
    return result


def placeholder(option):
    return (option["type"].split(":")[0] or "VALUE") if option["takesValue"] else ""


def choices(option):
    match = re.search(r"\{(.*)\}", option["type"])
    return match.group(1).split(",") if match else []


def remarks_of(option):
    result = []
    if choices(option):
        result.append("One of " + ", ".join(choices(option)) + ".")
    if option["default"] and option["takesValue"]:
        result.append(f"Default: {option['default']}.")
    if option["environment"]:
        result.append(f"Also taken from the variable {option['environment']}.")
    if option["required"] and option["names"]:
        result.append("Needed.")
    for key, words in (("needs", "Only with "), ("excludes", "Not with ")):
        if option[key]:
            result.append(words + ", ".join(option[key]) + ".")
    return result


def option_entry(option):
    if option["positional"]:
        head = f"\\fI{literal(option['positional'])}\\fR" + ("..." if option["many"] else "")
    else:
        value = placeholder(option)
        head = ", ".join(f"\\fB{literal(name)}\\fR" for name in option["names"])
        head += f" \\fI{literal(value)}\\fR" if value else ""
    texts = [sentence(option["help"])] + remarks_of(option)
    return [".TP", head, prose(" ".join(texts))]


def synopsis(tree, path):
    words = [f".B {literal(' '.join(path))}", "[\\fIOPTIONS\\fR]"]
    for option in tree["options"]:
        if option["positional"]:
            name = f"\\fI{literal(option['positional'])}\\fR" + ("..." if option["many"] else "")
            words.append(name if option["required"] else f"[{name}]")
    if tree["commands"]:
        words.append("\\fICOMMAND\\fR ..." if tree["needsCommand"] else "[\\fICOMMAND\\fR ...]...")
    return [words[0], " ".join(words[1:])]


def page(tree, path, parents, section, version):
    name = "-".join(path)
    parts = footer_parts(tree["footer"])
    summary = tree["help"].rstrip(".")
    lines = [f'.TH {literal(name.upper())} {section} "" "Recording2 {version}" "Recordings"', ".SH NAME",
             f"{literal(name)} \\- {prose(summary[:1].lower() + summary[1:])}", ".SH SYNOPSIS", *synopsis(tree, path),
             ".SH DESCRIPTION", prose(sentence(tree["help"]))]
    remarks = paragraphs(parts["remarks"])
    lines += ([".PP"] + remarks) if remarks else []
    if parents and parents[-1]["inheritsOptions"]:
        lines += [".PP", "The options of", f".BR {literal('-'.join(path[:-1]))} ({section})", "may stand here, too."]
    if tree["commands"]:
        lines.append(".SH COMMANDS")
        for command in tree["commands"]:
            lines += [".TP", f".BR {literal(name + '-' + command['name'])} ({section})", prose(sentence(command["help"]))]
    lines.append(".SH OPTIONS")
    for option in sorted(tree["options"], key=lambda option: not option["positional"]):
        lines += option_entry(option)
    if parts["examples"]:
        lines += [".SH EXAMPLES", *example_lines(parts["examples"])]
    codes = parts["codes"] or next((footer_parts(parent["footer"])["codes"] for parent in parents), [])
    if codes:
        lines += [".SH EXIT STATUS", *exit_codes(codes)]
    programs = [other for other in ("recstation(1)", "rectool(1)", "recview(1)", "zelvod(8)") if not other.startswith(name + "(")]
    lines += [".SH SEE ALSO", ",\n".join(f".BR {literal(other[:-3])} {other[-3:]}" for other in programs).replace(",\n", " ,\n"),
              ".PP", "Documents: /usr/share/doc/recording2\\-doc"]
    return "\n".join(lines) + "\n"


def write(tree, folder, section, version, path=(), parents=()):
    folder.mkdir(parents=True, exist_ok=True)
    path = (*path, tree["name"])
    text = page(tree, path, parents, section, version).encode("utf-8")
    (folder / f"{'-'.join(path)}.{section}.gz").write_bytes(gzip.compress(text, 9, mtime=0))
    for command in tree["commands"]:
        write(command, folder, section, version, path, (*parents, tree))
