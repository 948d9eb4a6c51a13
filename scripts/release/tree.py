"""The commit that is checked out, and whether the tree is that of the commit."""

import subprocess


def git(root, *words):
    return subprocess.run(["git", "--no-optional-locks", *words], cwd=root, check=True,
                          capture_output=True, text=True).stdout


def head(root):
    return git(root, "rev-parse", "HEAD").strip()


def changes(root):
    """The files that are not as in the commit, or not in it; those that git ignores do not count."""
    status = git(root, "status", "--porcelain", "-z", "--untracked-files=all", "--no-renames")
    return [entry[3:] for entry in status.split("\0") if entry]
