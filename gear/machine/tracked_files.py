"""Which files belong to the project."""

import pathlib
import subprocess

PROJECT = pathlib.Path(__file__).resolve().parents[2]


def tracked_files():
    """Their names from the root: what git knows, or is about to; all of an unpacked archive."""
    listing = subprocess.run(["git", "-C", str(PROJECT), "ls-files", "-co", "--exclude-standard"],
                             capture_output=True, text=True, check=False)
    names = listing.stdout.splitlines()
    if listing.returncode != 0:
        names = [str(p.relative_to(PROJECT)) for p in PROJECT.rglob("*") if p.is_file()]
        names = [n for n in names if not n.startswith(("build/", ".git/"))]
    return [name for name in names if (PROJECT / name).is_file()]
