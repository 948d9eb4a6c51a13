"""A browser without a window, as the tests drive it."""

import shutil
import tempfile

from selenium import webdriver
from selenium.webdriver.chrome.service import Service as Driver

SECONDS = 60
OPTIONS = (
    "--headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
    "--disable-background-networking --disable-component-update --disable-sync").split()


def start_browser(test_case, *more_options, **preferences):
    """A browser with a fresh profile; it ends with the tests of the class."""
    profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
    test_case.addClassCleanup(profile.cleanup)
    options = webdriver.ChromeOptions()
    for option in (*OPTIONS, f"--user-data-dir={profile.name}", *more_options):
        options.add_argument(option)
    options.add_experimental_option("prefs", preferences)
    browser = webdriver.Chrome(options=options, service=Driver(shutil.which("chromedriver")))
    test_case.addClassCleanup(browser.quit)
    browser.set_page_load_timeout(SECONDS)
    browser.set_script_timeout(SECONDS)
    return browser
