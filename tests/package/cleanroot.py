#!/usr/bin/env python3
"""Makes the folder of a system that has nothing but what Debian always has and what some packages need, of what is
installed here; no network. More can be added to it later.

Usage: cleanroot.py ROOT NAME... [FILE.deb...]
       (of a file what it depends on is there then, not itself; others of the files are no need)
Exit code 77, with a sentence, when something that is needed is not installed here.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys

DPKG = pathlib.Path("/var/lib/dpkg")
UNUSED = re.compile(r"/usr/share/(doc|locale|man|info|gtk-doc)/.*/")


def fields_of(text):
    fields = {}
    for line in text.splitlines():
        if line[:1].isspace():
            continue
        name, _, value = line.partition(":")
        fields[name] = value.strip()
    return fields


def alternatives_of(needs):
    """Of "a (>= 1), b | c": [[a], [b, c]]."""
    return [[re.split(r"[\s(:\[]", name.strip(), maxsplit=1)[0] for name in need.split("|")] for need in needs.split(",") if need.strip()]


class Installed:
    """What dpkg knows to be installed here."""

    def __init__(self):
        self.texts, self.fields, self.provided = {}, {}, {}
        for text in (DPKG / "status").read_text(encoding="utf-8").split("\n\n"):
            fields = fields_of(text)
            if fields.get("Status") != "install ok installed":
                continue
            name = fields["Package"]
            self.texts[name], self.fields[name] = text, fields
            for [provided] in alternatives_of(fields.get("Provides", "")):
                self.provided.setdefault(provided, name)

    def find(self, names):
        return next((found for name in names for found in (name if name in self.fields else self.provided.get(name),) if found), None)

    def closure(self, needs, own):
        names, open_needs = set(), list(needs)
        while open_needs:
            need = open_needs.pop()
            if set(need) & own:
                continue
            name = self.find(need)
            if name is None:
                print(f"There is no clean root: {' | '.join(need)} is needed and not installed here.")
                sys.exit(77)
            if name not in names:
                names.add(name)
                fields = self.fields[name]
                open_needs += alternatives_of(fields.get("Depends", "")) + alternatives_of(fields.get("Pre-Depends", ""))
        return names


def control_files(name, fields):
    for prefix in (name, f"{name}:{fields['Architecture']}"):
        yield from (DPKG / "info").glob(f"{prefix}.*")


def files_of(name, fields):
    for lists in control_files(name, fields):
        if lists.suffix == ".list":
            for line in lists.read_text(encoding="utf-8").splitlines():
                parent, base = os.path.split(line)
                path = os.path.join(os.path.realpath(parent), base)
                if base and not UNUSED.match(path) and os.path.lexists(path) and not (os.path.islink(path) and os.path.isdir(path) and parent == "/"):
                    yield path


def copy(paths, root):
    """As they are, without what lies in folders among them."""
    names = "\0".join(path.lstrip("/") for path in sorted(paths)).encode()
    pack = subprocess.Popen(["tar", "-C", "/", "--null", "--no-recursion", "-T", "-", "-cf", "-"], stdin=subprocess.PIPE, stdout=subprocess.PIPE)
    unpack = subprocess.Popen(["tar", "-C", str(root), "--keep-directory-symlink", "-xpf", "-"], stdin=pack.stdout)
    pack.stdin.write(names)
    pack.stdin.close()
    if pack.wait() != 0 or unpack.wait() != 0:
        sys.exit("the files of installed packages could not be copied")


def links_of_choices(root):
    """Such as awk, whose link is in no package's list."""
    for choice in (DPKG / "alternatives").iterdir():
        lines = choice.read_text(encoding="utf-8").splitlines()[1:]
        lines = lines[:lines.index("")]
        for name, link in [(choice.name, lines[0]), *zip(lines[1::2], lines[2::2])]:
            chosen = pathlib.Path("/etc/alternatives") / name
            if chosen.is_symlink() and (root / os.readlink(chosen).lstrip("/")).exists():
                yield str(chosen)
                yield link if os.path.dirname(link) == os.path.realpath(os.path.dirname(link)) else os.path.realpath(os.path.dirname(link)) + "/" + name


def begin(root):
    for folder in ("bin", "sbin", "lib", "lib32", "lib64", "libx32"):
        if os.path.islink(f"/{folder}"):
            (root / folder).symlink_to(os.readlink(f"/{folder}"))
    for folder in ("dev", "proc", "sys", "run", "tmp", "etc/alternatives", "var/lib/dpkg/info", "var/lib/dpkg/updates",
                   "var/lib/dpkg/triggers", "var/lib/dpkg/alternatives", "var/lib/apt/lists", "var/cache/apt/archives/partial", "var/log/apt"):
        (root / folder).mkdir(parents=True, exist_ok=True)
    for name in ("passwd", "group"):
        shutil.copy(f"/usr/share/base-passwd/{name}.master", root / "etc" / name)
    shutil.copy(DPKG / "info/format", root / "var/lib/dpkg/info/format")
    (root / "var/lib/dpkg/status").touch()


def main():
    root = pathlib.Path(sys.argv[1])
    debs = [fields_of(subprocess.run(["dpkg-deb", "-f", name], check=True, capture_output=True, text=True).stdout)
            for name in sys.argv[2:] if name.endswith(".deb")]
    installed = Installed()
    needs = [[name] for name in sys.argv[2:] if not name.endswith(".deb")]
    needs += [[name] for name, fields in installed.fields.items() if fields.get("Essential") == "yes"]
    needs += [need for deb in debs for need in alternatives_of(deb.get("Depends", ""))]
    names = installed.closure(needs, {deb["Package"] for deb in debs})
    if not (root / "var").exists():
        begin(root)
    status = root / "var/lib/dpkg/status"
    names -= {fields_of(text).get("Package") for text in status.read_text(encoding="utf-8").split("\n\n")}
    copy({path for name in names for path in files_of(name, installed.fields[name])}, root)
    for name in names:
        for file in control_files(name, installed.fields[name]):
            shutil.copy2(file, root / "var/lib/dpkg/info")
    with status.open("a", encoding="utf-8") as out:
        for name in sorted(names):
            out.write(installed.texts[name].strip() + "\n\n")
    copy(set(links_of_choices(root)), root)


main()
