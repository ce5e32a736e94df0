"""The page opens from a disk, on its own, and runs nothing but its own script."""

import re

from page_case import PageCase

INJECT = """
const script = document.createElement('script');
script.textContent = 'window.ran = true';
document.body.append(script);
const link = document.createElement('a');
link.setAttribute('onclick', 'window.ran = true');
document.body.append(link);
link.click();
return window.ran === true;
"""


class OpeningTest(PageCase):
    def test_it_shows_figures_of_the_device(self):
        self.open()
        figures = ["56 paths", "13 agents", "98 mounts", "15 findings"]
        self.assertEqual(self.texts(".figures li"), figures)
        self.assertEqual(self.texts("nav a"), ["Paths 56", "Agents 13", "Findings 15", "Matrix"])
        self.assertEqual(self.driver.title, "Paths – example")
        self.assertEqual(self.text(".brand"), "example")

    def test_it_loads_nothing(self):
        self.open()
        loaded = self.driver.execute_script(
            "return performance.getEntriesByType('resource').map((entry) => entry.name)"
        )
        self.assertEqual(loaded, [])

    def test_it_names_no_other_place(self):
        outside = re.findall(r"https?:|url\(|@import|\bimport\b|\bfetch\b", self.page.read_text())
        self.assertEqual(outside, [])

    def test_it_opens_without_a_network(self):
        offline = {"offline": True, "latency": 0, "downloadThroughput": 0, "uploadThroughput": 0}
        self.driver.execute_cdp_cmd("Network.enable", {})
        self.driver.execute_cdp_cmd("Network.emulateNetworkConditions", offline)
        try:
            self.open()
            self.assertIn("hardware", self.text("#path-tree"))
        finally:
            self.driver.execute_cdp_cmd("Network.disable", {})

    def test_it_has_no_inline_styles_or_handlers(self):
        start, end = (self.page.read_text().index(tag) for tag in ("<body>", '<script type="app'))
        body = self.page.read_text()[start:end]
        self.assertEqual(re.findall(r"\s(?:style|on\w+)\s*=", body), [])

    def test_the_policy_keeps_injected_scripts_from_running(self):
        self.open()
        self.assertFalse(self.driver.execute_script(INJECT))
        refused = self.errors()
        self.assertEqual(len(refused), 2, refused)
        for message in refused:
            self.assertIn("Content Security Policy", message)

    def test_the_policy_keeps_injected_styles_away(self):
        self.open()
        self.driver.execute_script(
            "const style = document.createElement('style');"
            "style.textContent = 'body { display: none }'; document.head.append(style);"
        )
        self.assertTrue(self.find("body").is_displayed())
        self.assertEqual(len(self.errors()), 1)
