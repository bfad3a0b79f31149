"""The project's own files, for the checks in this folder."""

import pathlib
import subprocess

ROOT = pathlib.Path(__file__).resolve().parent.parent


def project_files(*suffixes):
    """Paths relative to ROOT, sorted: what git tracks or would track, so that a new file is checked before its commit."""
    answer = subprocess.run(
        ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
        cwd=ROOT, capture_output=True, check=False)
    if answer.returncode == 0:
        names = {name for name in answer.stdout.decode().split("\0") if name}
    else:
        # An unpacked archive has no git; its build folder is no source.
        names = {str(path.relative_to(ROOT)) for path in ROOT.rglob("*") if path.is_file()}
        names = {name for name in names if not name.startswith("build/")}
    return sorted(name for name in names
                  if (not suffixes or name.endswith(suffixes)) and (ROOT / name).is_file())
