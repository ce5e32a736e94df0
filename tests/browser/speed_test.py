"""Large devices open soon, and searches answer while somebody types. The figures are printed; tests only
fail far above what is wanted, as machines may be busy."""

import unittest

import devices
import setting
from page_case import PageCase, address_of
from selenium.webdriver.common.by import By

WANTED_TO_OPEN = 2000  # milliseconds
WANTED_TO_ANSWER = 100
SLACK = 10

# How long a search takes from the key to the drawn answer.
ANSWER = """
const [text, done] = arguments;
const box = document.querySelector('section:not([hidden]) input[type=search]');
const start = performance.now();
box.value = text;
box.dispatchEvent(new Event('input'));
requestAnimationFrame(() => {
    document.body.offsetHeight;
    const channel = new MessageChannel();
    channel.port1.onmessage = () => done(performance.now() - start);
    channel.port2.postMessage(0);
});
"""
WATCH_LONG_TASKS = """
window.longTasks = [];
new PerformanceObserver((list) => longTasks.push(...list.getEntries().map((entry) => entry.duration)))
    .observe({type: 'longtask'});
"""
READY = "return performance.getEntriesByName('kelda-ready')[0].startTime"


class SpeedCases:
    """What both large devices are asked; mixed into a test of each."""

    def tell(self, what, milliseconds, limit):
        print(f"\n    {self.device_name}: {what}: {milliseconds:.0f} ms", end=" ")
        self.assertLess(milliseconds, limit * SLACK, what)

    def test_it_opens(self):
        self.open()
        size = self.page.stat().st_size / 1e6
        figures = ", ".join(self.texts(".figures li"))
        print(f"\n    {self.device_name}: {size:.1f} MB, {figures}", end=" ")
        self.tell("first usable", self.driver.execute_script(READY), WANTED_TO_OPEN)
        self.assertLess(len(self.find_all("*")), 2000, "only rows in sight are elements")

    def test_searches_answer(self):
        self.open()
        first = self.driver.execute_async_script(ANSWER, self.searches[0])
        self.tell("first search", first, WANTED_TO_ANSWER)
        answers = {text: self.driver.execute_async_script(ANSWER, text) for text in self.searches}
        slowest = max(answers, key=answers.get)
        self.tell(f"slowest of {len(answers)} searches, '{slowest}'", answers[slowest], WANTED_TO_ANSWER)
        self.assertIn(" matching mount", self.text("#path-count"))

    def test_typing_does_not_stall(self):
        self.open()
        self.driver.execute_async_script(ANSWER, "")
        self.driver.execute_script(WATCH_LONG_TASKS)
        for letter in self.searches[0] + " flag:w":
            self.find("#path-search").send_keys(letter)
        self.settle()
        longest = max(self.driver.execute_script("return longTasks"), default=0)
        self.tell("longest task while typing (0: none above 50)", longest, WANTED_TO_ANSWER)

    def test_views_open(self):
        self.open()
        for view in ("agent", "findings", "matrix"):
            taken = self.driver.execute_async_script(
                "const [view, done] = arguments; const start = performance.now();"
                "addEventListener('hashchange', () => requestAnimationFrame(() => {"
                "    document.body.offsetHeight; done(performance.now() - start); }), {once: true});"
                "location.hash = `#/${view}`;", view)
            self.tell(f"the view of {view}", taken, WANTED_TO_OPEN)

    def test_a_path_with_many_agents_opens(self):
        mounts = setting.ask(self.device, "who", self.shared)["mounts"]
        self.open(address_of("path", *mounts[0]["path"].split("/")))
        self.assertGreater(len(self.driver.find_elements(By.CSS_SELECTOR, ".card .chip")), 20)
        self.tell(f"a path of {len(mounts)} agents", self.driver.execute_script(READY), WANTED_TO_OPEN)


class LargeDeviceTest(SpeedCases, PageCase):
    device_name = "large"
    searches = ["group7", "part1*/**/state", "agent:Agent1* flag:w", "type:*::State3 flag:r", "**/item99/**",
                "agent:9 type:Part4*", "e", "flag:rw path:unit"]
    shared = "part1/unit/1/group0/item0/state"

    @classmethod
    def make_device(cls):
        return devices.make_large(setting.work() / "large")

    def test_it_is_large(self):
        self.open()
        paths, agents, mounts, _ = (int(text.split()[0].replace(",", "")) for text in self.texts(".figures li"))
        self.assertGreaterEqual(paths, 10_000)
        self.assertEqual(agents, 300)
        self.assertGreater(mounts, 100_000)

    def test_a_list_holds_only_rows_in_sight_wherever_it_is_scrolled_to(self):
        self.open(address_of("path", q="e"))
        self.find("#path-tree").send_keys("\ue010")  # End
        self.settle()
        self.assertGreater(self.find("#path-tree").get_property("scrollTop"), 500_000)
        self.assertLess(len(self.find_all("#path-tree .row")), 60)
        self.assertTrue(self.find("#path-tree .active").is_displayed())

    def test_the_matrix_of_many_agents_is_moved_through(self):
        self.open(address_of("matrix"))
        self.driver.execute_script(WATCH_LONG_TASKS)
        box = self.find(".matrix-box")
        for _ in range(20):
            box.send_keys("\ue00f")  # page down
        self.settle()
        longest = max(self.driver.execute_script("return longTasks"), default=0)
        self.tell("longest task while moving in the matrix (0: none above 50)", longest, WANTED_TO_ANSWER)


class OpenConfigTest(SpeedCases, PageCase):
    device_name = "openconfig"
    searches = ["interface", "interfaces/**/state", "agent:B* flag:w", "type:*Config flag:r", "**/bgp/**",
                "agent:9 type:Oc*", "e", "flag:rw path:state"]
    shared = "cell/1/system/processes/process/*"

    @classmethod
    def make_device(cls):
        if not setting.openconfig().exists():
            raise unittest.SkipTest(f"{setting.openconfig()} is not there")
        return setting.openconfig()
