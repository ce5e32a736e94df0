"""A search finds what the program's own commands find."""

import re

import setting
from page_case import PageCase, address_of


class SearchTest(PageCase):
    def who(self, pattern, *options):
        answer = setting.ask(self.device, "who", pattern, *options)
        return answer["mounts"]

    def mounted(self, *who):
        return {mount["path"] for mount in self.who(*who)}

    def test_patterns_of_paths_match_as_in_who(self):
        self.open()
        for pattern in ["hardware/fan/**", "**/ipv?", "cell/*/status", "sys/config/time/*", "port/*/lane/7",
                        "**/tray/*/s*", "hardware/**/front/*", "agent/Watchdog/log"]:
            with self.subTest(pattern):
                self.search("path", f"{pattern} agent:*")
                self.assertEqual(self.found_paths(), self.mounted(pattern))

    def test_types_match_as_in_who(self):
        self.open()
        for kind in ["Fan::*", "*::Status", "Sys::Log", "Temperature::*or", "Fen::Dir"]:
            with self.subTest(kind):
                self.search("path", f"type:{kind} agent:*")
                self.assertEqual(self.found_paths(), self.mounted("**", "--type", kind))

    def test_flags_match_as_in_who(self):
        self.open()
        for flags in ["w", "r", "rw", "c", "i", "y"]:
            with self.subTest(flags):
                self.search("path", f"flag:{flags}")
                self.assertEqual(self.found_paths(), self.mounted("**", "--flag", flags))

    def test_agent_and_flag_mean_the_same_mount(self):
        self.open()
        self.search("path", "agent:Thermal flag:w hardware/")
        wanted = {mount["path"] for mount in self.who("hardware/**", "--flag", "w") if mount["agent"] == "Thermal"}
        self.assertEqual(self.found_paths(), wanted)
        self.assertIn("hardware/fan/policy", wanted)

    def test_a_part_of_a_path_in_any_case_finds_it(self):
        self.open()
        self.search("path", "FAN")
        declared = [re.sub(r"%\w+", "*", path["path"]) for path in setting.ask(self.device, "preinit")["paths"]]
        wanted = {path for path in {*declared, *self.mounted("**")} if "fan" in path.lower()}
        self.assertEqual(self.found_paths(), wanted)
        self.assertEqual(len(wanted), 4)

    def test_the_number_of_matches_shows(self):
        self.open()
        self.search("path", "sys/clock")
        self.assertEqual(self.text("#path-count"), "1 path with 12 matching mounts")
        self.search("path", "sys/clock flag:w")
        self.assertEqual(self.text("#path-count"), "1 path with 1 matching mount")

    def test_without_a_match_it_says_what_could_be_meant(self):
        self.open()
        self.search("path", "Fan::Status")
        self.assertEqual(self.texts("#path-empty p"), ["No path matches.", "Try type:Fan::Status"])
        self.find("#path-empty button").click()
        self.settle()
        self.assertEqual(self.found_paths(), {"hardware/fan/tray/*/status"})

    def test_an_emptied_search_shows_the_tree_as_it_was(self):
        self.open()
        before = self.rows("#path-tree")
        self.search("path", "ipv4")
        self.assertLess(len(self.rows("#path-tree")), len(before))
        self.find("#path-search").send_keys("\ue00c")  # Escape
        self.settle()
        self.assertEqual(self.rows("#path-tree"), before)
        self.assertEqual(self.text("#path-count"), "56 paths")

    def test_what_was_closed_before_a_search_is_closed_after_it(self):
        self.open()
        self.find("#path-tree").send_keys("\ue011", "\ue012")  # Home, ArrowLeft
        self.settle()
        before = self.rows("#path-tree")
        self.assertEqual(before[1]["title"], "cell")
        self.search("path", "heartbeat")
        self.assertEqual(len(self.rows("#path-tree")), 3)
        self.find("#path-search").send_keys("\ue00c")  # Escape
        self.settle()
        self.assertEqual(self.rows("#path-tree"), before)

    def test_agents_are_found_by_name_and_by_what_they_mount(self):
        self.open(address_of("agent"))
        for text, who in [("path:sys/clock flag:w", ["sys/clock", "--flag", "w"]),
                          ("type:Route::*", ["**", "--type", "Route::*"]),
                          ("path:cell/**", ["cell/**"])]:
            with self.subTest(text):
                self.search("agent", text)
                wanted = {mount["agent"] for mount in self.who(*who)}
                self.assertEqual({row["title"] for row in self.rows("#agent-list")}, wanted)
        self.search("agent", "rout")
        self.assertEqual([row["title"] for row in self.rows("#agent-list")],
                         ["RouteLeak-%from-%to", "Routing-%table"])

    def test_the_mounts_of_an_agent_are_searched(self):
        self.open(address_of("agent", "Thermal"))
        box = self.find("#agent-details input")
        box.send_keys("board flag:r")
        self.settle()
        self.assertEqual(self.texts(".mounts tbody th"),
                         [f"hardware/temperature/board/{name}" for name in ("chip", "inlet", "outlet")])
