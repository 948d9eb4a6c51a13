"""Verifies the published signatures in a browser, by the module of examples/verify.

    browser_verifier_test.py
"""

import base64
import sys
import unittest

from verifiers_test import EXAMPLES, ROOT, vectors
sys.path.insert(0, str(ROOT / "tests" / "servers"))
from browser import start_browser  # noqa: E402

VERIFY_ALL = """
const [module, cases, done] = arguments;
const bytes = (text) => Uint8Array.from(atob(text), (character) => character.charCodeAt(0));
import(`data:text/javascript;base64,${module}`).then(({ verify }) =>
    done(cases.map(([project, data, text]) => verify(bytes(project), bytes(data), text))),
    (error) => done(String(error)));
"""


def base64_text(data):
    return base64.b64encode(data).decode()


class BrowserVerifier(unittest.TestCase):
    def test_published_signatures_are_valid_over_their_data_alone(self):
        browser = start_browser(type(self))
        browser.get("about:blank")
        module = base64_text((EXAMPLES / "verify.mjs").read_bytes())
        published = vectors()
        for change, verdict in ((b"", True), (b"\n", False)):
            cases = [[base64_text(project.read_bytes()), base64_text(data + change), text]
                     for project, text, data in published]
            self.assertEqual(browser.execute_async_script(VERIFY_ALL, module, cases),
                             [verdict] * len(published))


if __name__ == "__main__":
    unittest.main()
