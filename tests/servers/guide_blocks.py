"""The lines for a server that a page of docs/ tells an administrator to write."""

import re

from servers import ROOT


def blocks(heading, language, page="access.md"):
    """Those under a heading, in their order; the language is what the page says that they are."""
    text = (ROOT / "docs" / page).read_text(encoding="utf-8")
    section = re.search(rf"(?ms)^## {re.escape(heading)}\n(.*?)(?=^## |\Z)", text).group(1)
    found = re.findall(rf"(?ms)^```{language}\n(.*?)^```$", section)
    if not found:
        raise AssertionError(f"{page} has no lines for {language} under '{heading}'")
    return found
