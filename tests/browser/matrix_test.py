"""The matrix counts the paths that one agent writes and another reads."""

from collections import Counter

import devices
import setting
from page_case import PageCase, address_of
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

# In these files every mount names the agent itself.
OWN = "profiles/DefaultMountGroupPerAgent"

# The colour of the drawing near the corner of a cell, and those of the scale.
COLOURS = """
const [x, y] = arguments;
const pixel = document.querySelector('canvas').getContext('2d').getImageData(x, y, 1, 1).data;
return [`rgb(${pixel[0]}, ${pixel[1]}, ${pixel[2]})`,
        ...[0, 1, 2, 3, 4].map((step) => getComputedStyle(document.querySelector(`.step-${step}`)).backgroundColor)];
"""


def meeting_pairs(device):
    """Writer and reader of each path, worked out from what `kelda who` says."""
    mounts = [mount for mount in setting.ask(device, "who", "**")["mounts"]
              if not all(place["file"] == OWN for place in mount["places"])]
    pairs = Counter()
    for written in mounts:
        readers = {read["agent"] for read in setting.ask(device, "who", written["path"])["mounts"]
                   if read in mounts and "r" in read["flags"]}
        if "w" in written["flags"]:
            pairs.update((written["agent"], reader) for reader in readers - {written["agent"]})
    return pairs


class MatrixTest(PageCase):
    def test_the_list_holds_every_pair_with_its_count(self):
        self.open(address_of("matrix"))
        shown = {tuple(row["text"].replace("→", "").split()) for row in self.rows("#pair-list")}
        wanted = {(writer, reader, str(count)) for (writer, reader), count in meeting_pairs(self.device).items()}
        self.assertEqual(shown, wanted)
        self.assertIn(("CellKeeper", "Routing-%table", "2"), wanted)
        self.assertEqual(self.text("#matrix-count"), f"{len(wanted)} pairs of a writer and a reader")

    def test_keys_move_through_the_drawn_cells(self):
        self.open(address_of("matrix"))
        pairs = meeting_pairs(self.device)
        writers = sorted({writer for writer, _ in pairs})
        readers = sorted({reader for _, reader in pairs})
        self.find(".matrix-box").send_keys(Keys.ARROW_RIGHT)
        self.press(Keys.ARROW_LEFT)
        for row, writer in enumerate(writers):
            for column, reader in enumerate(readers):
                count = pairs[writer, reader]
                paths = {0: "nothing", 1: "1 path"}.get(count, f"{count} paths")
                wanted = f"{writer} itself" if writer == reader else f"{writer} writes {paths} that {reader} reads."
                self.assertEqual(self.text("#matrix-hint"), wanted)
                self.press(Keys.ARROW_RIGHT)
            if row + 1 < len(writers):
                self.press(Keys.ARROW_DOWN, Keys.HOME)

    def test_a_chosen_cell_lists_its_paths(self):
        self.open(address_of("matrix"))
        self.find(".matrix-box").send_keys(Keys.HOME)
        while self.text("#matrix-hint") != "CellKeeper writes 2 paths that Routing-%table reads.":
            self.press(Keys.ARROW_RIGHT)
        self.press(Keys.ENTER)
        self.assertEqual(self.hash(), "#/matrix/CellKeeper/Routing-%table")
        self.assertEqual(self.texts("#matrix-details tbody tr"), ["cell/1/health rw r", "cell/1/status rw r"])

    def test_a_cell_is_chosen_by_the_mouse_and_has_its_colour(self):
        self.open(address_of("matrix"))
        box = self.find(".matrix-box")
        spot = self.spot_of(box, "Thermal writes 1 path that FanTray-%tray reads.")
        colour, *steps = self.driver.execute_script(COLOURS, spot[0] - 9, spot[1] - 9)
        self.assertEqual(colour, steps[0])
        ActionChains(self.driver).click().perform()
        self.settle()
        self.assertEqual(self.hash(), "#/matrix/Thermal/FanTray-%tray")
        self.assertEqual(self.texts("#matrix-details tbody tr"), ["hardware/fan/policy rw r"])

    def spot_of(self, box, hint):
        """Points at cell after cell until the hint is the wanted one."""
        width, height = box.size["width"], box.size["height"]
        for y in range(150, height, 20):
            for x in range(150, width, 20):
                ActionChains(self.driver, duration=0).move_to_element_with_offset(
                    box, x - width // 2, y - height // 2).perform()
                if self.text("#matrix-hint") == hint:
                    self.settle()
                    return self.centre_of_cell(box, x, y)
        raise AssertionError(f"no cell says: {hint}")

    def centre_of_cell(self, box, x, y):
        """Cells are squares of 26; where one begins shows by the hint that changes."""
        hint = self.text("#matrix-hint")
        width, height = box.size["width"], box.size["height"]

        def same(to_x, to_y):
            ActionChains(self.driver, duration=0).move_to_element_with_offset(
                box, to_x - width // 2, to_y - height // 2).perform()
            return self.text("#matrix-hint") == hint

        left, top = x, y
        while same(left - 1, y):
            left -= 1
        while same(x, top - 1):
            top -= 1
        same(left + 13, top + 13)
        return left + 12, top + 12

    def test_a_row_of_the_list_leads_to_the_same_paths(self):
        self.open(address_of("matrix"))
        row = next(row for row in self.find_all("#pair-list .row") if "Routing-%table" in row.text)
        row.click()
        self.settle()
        self.assertEqual(self.hash(), "#/matrix/CellKeeper/Routing-%table")
        self.assertEqual(row_of_chosen(self), ["CellKeeper → Routing-%table 2"])

    def test_a_search_leaves_the_pairs_of_an_agent(self):
        self.open(address_of("matrix"))
        self.search("matrix", "Thermal")
        pairs = {pair for pair in meeting_pairs(self.device) if "Thermal" in pair}
        self.assertEqual(len(self.rows("#pair-list")), len(pairs))
        self.search("matrix", "LedBlinker")
        self.assertEqual(self.texts("#view-matrix .empty-title"), ["No agent matches.", "No pair is chosen."])



class MeetingTest(PageCase):
    """Paths with tokens: a value may be the one that another agent has."""

    device_name = "meeting"

    @classmethod
    def make_device(cls):
        profiles = {
            "Writer": "agentName: Writer-%n\na/%n/b, T, w\n",
            "Reader": "agentName: Reader\nalias: %n = 7\na/%n/b, T, r\n",
            "Twice": "agentName: Twice-%m\na/%m/b, T, r\nalias: %n = 8\na/%n/b, T, r\n",
            "Other": "agentName: Other\nalias: %n = 7\na/%n/c, T, r\n",
        }
        preinit = {"A": "a/%x/b, T, createOnMount\na/%x/c, T, createOnMount\n"}
        return devices.make_device(setting.work() / "meeting", preinit, profiles)

    def test_paths_that_may_be_the_same_meet(self):
        self.open(address_of("matrix", "Writer-%n", "Reader"))
        self.assertEqual(self.texts("#matrix-details tbody tr"), ["a/*/b read as a/7/b w r"])

    def test_a_path_counts_once_for_a_reader_with_two_that_it_may_be(self):
        self.open(address_of("matrix", "Writer-%n", "Twice-%m"))
        self.assertEqual({row["text"].replace("\n", " ") for row in self.rows("#pair-list")},
                         {"Writer-%n → Reader 1", "Writer-%n → Twice-%m 1"})
        self.assertEqual(self.texts("#matrix-details tbody tr"), ["a/*/b read as a/8/b w r r"])


def row_of_chosen(case):
    return [" ".join(row.text.split()) for row in case.find_all('#pair-list [aria-selected="true"]')]
