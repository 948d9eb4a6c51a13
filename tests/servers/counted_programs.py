"""Programs that count how often a server starts them, and then go on as the real ones.

    server = counting_server(Lighttpd, programs, folder, ...)    as Lighttpd(programs, folder, ...)
    with server:
        ...
        starts(server)
"""

import shutil
import tempfile
from pathlib import Path

from servers import give_to_account

COUNTS = """#!/bin/sh
echo >>"${0%/*}/starts"
exec "${0%sign.cgi}real-sign.cgi"
"""


def counting_server(kind, programs, folder, **options):
    counting = Path(tempfile.mkdtemp(prefix="counting-", dir=folder))
    shutil.copy(programs / "limited", counting)
    for name in ("sign.cgi", "nph-sign.cgi"):
        shutil.copy(programs / name, counting / name.replace("sign.cgi", "real-sign.cgi"))
        (counting / name).write_text(COUNTS, encoding="ascii")
        (counting / name).chmod(0o755)
    server = kind(counting, folder, **options)
    # The programs write their count beside themselves.
    give_to_account(server.programs)
    return server


def starts(server):
    count = server.programs / "starts"
    return count.stat().st_size if count.exists() else 0
