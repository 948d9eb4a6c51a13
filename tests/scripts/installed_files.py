"""What an installation must consist of, and what a folder holds."""

import stat
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]

# The mode of each file under the prefix, or where a link points.
FILES = {
    "bin/projectctl": "755",
    "libexec/sign-cgi/check-service.sh": "755",
    "libexec/sign-cgi/limited": "755",
    "libexec/sign-cgi/nph-sign.cgi": "-> sign.cgi",
    "libexec/sign-cgi/sign.cgi": "755",
    "share/bash-completion/completions/projectctl": "644",
    "share/doc/sign-cgi/SECURITY.md": "644",
    "share/doc/sign-cgi/changelog.gz": "644",
    "share/doc/sign-cgi/copyright": "644",
    "share/doc/sign-cgi/examples/README.md": "644",
    "share/doc/sign-cgi/examples/client.mjs": "755",
    "share/doc/sign-cgi/examples/client.py": "755",
    "share/doc/sign-cgi/examples/client.sh": "755",
    "share/doc/sign-cgi/examples/curl.sh": "755",
    "share/doc/sign-cgi/examples/page/index.html": "644",
    "share/doc/sign-cgi/examples/verify/verify.c": "644",
    "share/doc/sign-cgi/examples/verify/verify.mjs": "755",
    "share/doc/sign-cgi/examples/verify/verify.py": "755",
    "share/fish/vendor_completions.d/projectctl.fish": "644",
    "share/man/man1/projectctl.1.gz": "644",
    "share/man/man5/project-file.5.gz": "644",
    "share/man/man8/nph-sign.cgi.8.gz": "-> sign.cgi.8.gz",
    "share/man/man8/sign.cgi.8.gz": "644",
    "share/sign-cgi/check.project": "644",
} | {
    f"share/doc/sign-cgi/{path.relative_to(ROOT)}": "644"
    for path in (ROOT / "docs").iterdir()
    if path.is_file() and path.name not in ("architecture.md", "performance.md", "performance.svg")
}

# The library for other programs, which the Debian package does not have.
DEVELOPMENT = {
    "include/sign_verify.h": "644",
    "lib/libsign_verify.a": "644",
    "lib/pkgconfig/sign-verify.pc": "644",
}

# Under the prefix /usr these stand where the servers and systemd look for them.
CONFIGURATIONS = {
    "etc/apache2/conf-available/sign-cgi.conf": "apache.conf",
    "etc/lighttpd/conf-available/50-sign-cgi.conf": "lighttpd.conf",
    "etc/nginx/snippets/sign-cgi-location.conf": "nginx-location.conf",
    "etc/nginx/snippets/sign-cgi-server.conf": "nginx-server.conf",
} | {
    f"usr/lib/systemd/system/{name}": f"systemd/{name}"
    for name in ("sign-fcgiwrap@.service", "sign-fcgiwrap@.service.d/confine.conf",
                 "sign-fcgiwrap@.socket")
}


def under_a_prefix():
    """The files of `cmake --install` below its prefix."""
    return FILES | DEVELOPMENT | {f"share/doc/sign-cgi/examples/{name}": "644"
                                  for name in CONFIGURATIONS.values()} | {
        "share/zsh/site-functions/_projectctl": "644"}


def under_usr():
    """The files of `cmake --install --prefix /usr` below the root folder."""
    return of_the_service() | {f"usr/{path}": mode for path, mode in DEVELOPMENT.items()}


def of_the_service():
    """Those that the Debian package has as well."""
    return {f"usr/{path}": mode for path, mode in FILES.items()} | {
        path: "644" for path in CONFIGURATIONS} | {
        "usr/share/zsh/vendor-completions/_projectctl": "644"}


def of_the_package():
    """The files of the Debian package."""
    return of_the_service() | {
        "usr/share/doc/sign-cgi/changelog.Debian.gz": "644",
        "usr/share/lintian/overrides/sign-cgi": "644",
    }


def files_below(folder):
    """The files that a folder holds, in the form of the lists above."""
    found = {}
    for path in folder.rglob("*"):
        if path.is_symlink():
            found[str(path.relative_to(folder))] = f"-> {path.readlink()}"
        elif not path.is_dir():
            found[str(path.relative_to(folder))] = f"{stat.S_IMODE(path.stat().st_mode):o}"
    return found


def folder_modes_below(folder):
    """The modes that folders below a folder have."""
    return {f"{stat.S_IMODE(path.stat().st_mode):o}" for path in folder.rglob("*")
            if path.is_dir() and not path.is_symlink()}
