"""The files of the project, for the checks."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent
OTHER_FOLDERS = (".git", "build", "out")


def project_files(root):
    """Paths, relative to root, of the files that are or could be committed, sorted."""
    return sorted(path for path in _from_git(root) or _from_folder(root) if (root / path).is_file())


def _git(root, *arguments):
    # The checkout may belong to another user than the one who runs the checks.
    command = ["git", "-c", f"safe.directory={root}", "-C", str(root), *arguments]
    try:
        result = subprocess.run(command, capture_output=True, check=False)
    except FileNotFoundError:
        return None
    return result.stdout.decode() if result.returncode == 0 else None


def _from_git(root):
    top = _git(root, "rev-parse", "--show-toplevel")
    if top is None or pathlib.Path(top.strip()) != root:
        return None
    listed = _git(root, "ls-files", "-z", "--cached", "--others", "--exclude-standard")
    return {pathlib.Path(name) for name in listed.split("\0") if name}


def _from_folder(root):
    """All files of an unpacked archive but those of build folders."""
    paths = (path.relative_to(root) for path in root.rglob("*") if "node_modules" not in path.parts)
    return {path for path in paths if path.parts[0] not in OTHER_FOLDERS and not path.parts[0].startswith("build-")}
