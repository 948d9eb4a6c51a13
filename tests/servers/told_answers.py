"""The table of docs/http-interface.md of what servers answer in the place of the program."""

import servers

COLUMNS = "| Request | Apache | lighttpd | nginx |"
PROGRAM = "program"  # the program answers


def told_answers(kind):
    """What the table has for this server: a status or PROGRAM for each kind of request."""
    text = (servers.ROOT / "docs" / "http-interface.md").read_text(encoding="utf-8")
    rows = text.partition(f"\n{COLUMNS}\n")[2].partition("\n\n")[0].split("\n")[1:]
    column = next(place for place, server in
                  enumerate((servers.Apache, servers.Lighttpd, servers.Nginx), 1)
                  if issubclass(kind, server))
    cells = [row.strip("| ").split(" | ") for row in rows]
    return {row[0]: row[column] if row[column] == PROGRAM else int(row[column]) for row in cells}
