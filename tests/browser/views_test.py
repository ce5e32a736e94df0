"""The views show what the files of the example device say."""

import devices
import setting
from page_case import PageCase, address_of


class PathsTest(PageCase):
    def test_a_path_shows_its_declaration(self):
        self.open(address_of("path", "hardware", "fan", "tray", "*", "status"))
        self.assertEqual(self.text("#path-details h2"), "hardware/fan/tray/*/status")
        self.assertEqual(self.texts("#path-details .facts > div"),
                         ["Type Fan::Status", "Attribute createOnMount", "Declared in preinit/Environment:18"])

    def test_a_mount_shows_its_place_and_what_its_alias_stands_for(self):
        self.open(address_of("path", "port", "*", "lane", "1"))
        self.assertEqual(self.texts(".card-head"), ["Port-%name$ rw"])
        self.assertEqual(self.texts(".card .places"), ["profiles/Port:19"])
        self.assertEqual(self.texts(".card .written"), ["port/%name/lane/%lane, Port::Lane, rw"])
        self.assertEqual(self.texts(".card .expansions tr"),
                         ["%name → * token of the agent’s name, profiles/Port:3",
                          "%lane → 1 alias, profiles/Port:14"])

    def test_a_line_that_stands_in_two_files_shows_with_each(self):
        self.open(address_of("path", "cell", "2", "status"))
        self.assertEqual(self.texts(".card .places"), ["profiles/CellKeeper:18", "profiles/FirmwareUpgrade:10"])
        self.assertEqual(self.texts(".card .written"), ["%peerCellPath/status, Cell::Status, r"] * 2)
        self.assertEqual(self.texts(".card .expansions tr"), ["%peerCellId → 2 known to every profile"] * 2)

    def test_an_expression_shows_beside_its_value(self):
        self.open(address_of("path", "media", "whole"))
        self.assertEqual(self.texts(".card .expansions tr"),
                         ["%kind → whole alias, profiles/Port:11 = %isPart?part:whole"])

    def test_an_included_line_shows_the_include_line_and_its_group(self):
        self.open(address_of("path", "hardware", "temperature", "ambient", "rear"))
        self.assertEqual(self.texts(".card .places"),
                         ["profiles/sensors.ambient:4 included from profiles/Thermal:14"])
        self.assertEqual(self.texts(".card .circumstances"), ["group sensors"])

    def test_a_condition_shows(self):
        self.open(address_of("path", "maker", "bootLoader", "version"))
        self.assertEqual(self.texts(".card .tag"),
                         ["group bootLoader", "ConditionBlocker: the boot loader is locked"])
        self.assertIn("Declared in no line of a preinit file", self.texts(".facts > div"))

    def test_all_who_mount_a_path_show_with_their_flags(self):
        for path in ["sys/clock", "cell/1/health", "hardware/led/front/system", "agent/*/log"]:
            with self.subTest(path):
                self.open(address_of("path", *path.split("/")))
                shown = {(name, card.find_element("css selector", ".card-head .flags").text)
                         for card in self.find_all(".card")
                         for name in (link.text for link in card.find_elements("css selector", ".chip"))}
                wanted = {(mount["agent"], mount["flags"])
                          for mount in setting.ask(self.device, "who", path)["mounts"]
                          if mount["path"] == path}
                self.assertEqual(shown, wanted)

    def test_paths_that_may_be_the_same_show(self):
        self.open(address_of("path", "agent", "Watchdog", "log"))
        self.assertIn("May be the same path", self.texts("#path-details h3"))
        self.assertEqual(self.texts("#path-details .data tbody tr"), ["agent/*/log Agent::Log 12"])

    def test_a_directory_shows_what_is_below(self):
        self.open(address_of("path", "hardware", "fan"))
        self.assertEqual(self.texts("#path-details .facts > div"), ["Directory 3 paths below"])
        self.assertEqual(self.texts("#path-details .data tbody td:first-child"),
                         ["hardware/fan/policy", "hardware/fan/tray"])

    def test_configuration_and_two_declarations_show(self):
        self.open(address_of("path", "sys", "config", "banner"))
        self.assertIn("Configuration yes, declared with CONFIG:", self.texts(".facts > div"))
        self.open(address_of("path", "sys", "log"))
        self.assertIn("Declared in preinit/System:10 preinit/System:11", self.texts(".facts > div"))

    def test_an_unknown_path_is_told(self):
        self.open(address_of("path", "no", "such"))
        self.assertEqual(self.texts("#path-details .empty p")[:2], ["This device has no such path.", "no/such"])

    def test_a_place_is_copied(self):
        self.open(address_of("path", "hardware", "fan", "policy"))
        self.driver.execute_script(
            "window.copied = []; navigator.clipboard.writeText = async (text) => { copied.push(text); };")
        self.find(".card .places .copy").click()
        self.settle()
        self.assertEqual(self.driver.execute_script("return copied"), ["profiles/FanTray:5"])
        self.assertEqual(self.driver.execute_script("return document.getElementById('status').textContent"),
                         "Copied profiles/FanTray:5")


class AgentsTest(PageCase):
    def test_every_agent_is_listed_with_its_mounts(self):
        self.open(address_of("agent"))
        agents = setting.ask(self.device, "agents")["agents"]
        shown = [row["text"].split() for row in self.rows("#agent-list")]
        wanted = [[agent["name"], *(["active"] if agent["activeMount"] else []), str(agent["paths"])]
                  for agent in agents]
        self.assertEqual(shown, wanted)

    def test_an_agent_shows_its_settings(self):
        self.open(address_of("agent", "CellKeeper"))
        self.assertEqual(self.texts("#agent-details .facts > div"),
                         ["Kind passive mounts", "Root flags rStp", "Connection flags SN", "Default mounts yes",
                          "Sub-agents CellKeeper-health CellKeeper-cell%cellId",
                          "Profiles profiles/CellKeeper profiles/DefaultMountGroup "
                          "profiles/DefaultMountGroupPerAgent"])
        self.open(address_of("agent", "LedBlinker"))
        self.assertIn("Default mounts none (noDefaultMountGroup)", self.texts("#agent-details .facts > div"))

    def test_an_agent_shows_its_mounts(self):
        self.open(address_of("agent", "Routing-%table"))
        mounts = [mount for mount in setting.ask(self.device, "who", "**")["mounts"]
                  if mount["agent"] == "Routing-%table"]
        self.assertEqual(self.texts(".mounts tbody th"), [mount["path"] for mount in mounts])
        self.assertEqual(self.texts(".mounts .flags"), [mount["flags"] for mount in mounts])

    def test_a_mount_unfolds_to_its_lines_and_to_who_else_has_it(self):
        self.open(address_of("agent", "Routing-%table"))
        button = next(button for button in self.find_all(".twist-button")
                      if button.get_attribute("aria-label") == "Lines of cell/1/health")
        button.click()
        self.assertEqual(button.get_attribute("aria-expanded"), "true")
        self.assertEqual(self.texts(".unfolded .places"), ["profiles/shared.cell:2 included from profiles/Routing:22"])
        self.assertEqual(self.texts(".unfolded .expansions tr"), ["%cellId → 1 known to every profile"])
        self.assertEqual(self.texts(".unfolded .others"), ["Also mounted by 1 agent CellKeeper rw"])

    def test_an_unknown_agent_is_told(self):
        self.open(address_of("agent", "Nobody"))
        self.assertEqual(self.texts("#agent-details p"), ["No profile of this device names this agent.", "Nobody"])


class FindingsTest(PageCase):
    def found(self, *severities):
        findings = setting.ask(self.device, "check")["findings"]
        return [f"{finding['file']}:{finding['line']}:{finding['column']}"
                for severity in severities for finding in findings if finding["severity"] == severity]

    def test_findings_show_by_severity_with_place_and_message(self):
        self.open(address_of("findings"))
        self.assertEqual(self.texts(".finding .place"), self.found("error", "warning", "note"))
        self.assertEqual(self.texts("#finding-severities button"), ["0 errors", "3 warnings", "12 notes"])
        self.assertEqual(self.texts(".finding")[0],
                         "warning no file matches 'sensors.optional.*' profiles/Thermal:15:10 "
                         "include-matches-nothing The pattern of an include matches no file")

    def test_severities_are_switched_off(self):
        self.open(address_of("findings"))
        self.find("#finding-severities .note").click()
        self.assertEqual(self.texts(".finding .place"), self.found("error", "warning"))
        self.assertEqual(self.find("#finding-severities .note").get_attribute("aria-pressed"), "false")
        self.assertEqual(self.hash(), "#/findings?show=error,warning")
        self.assertEqual(self.text("#finding-count"), "3 findings of 15")

    def test_findings_are_searched(self):
        self.open(address_of("findings"))
        self.search("finding", "alias-redefined linkreporter")
        self.assertEqual(self.texts(".finding .place"), ["profiles/LinkReporter:16:8"])
        self.search("finding", "profiles/LinkReporter:16:8")
        self.assertEqual(self.texts(".finding .place"), ["profiles/LinkReporter:16:8"])
        self.search("finding", "nothing of this kind")
        self.assertEqual(self.texts(".empty-title"), ["No finding matches."])

    def test_a_finding_without_a_place_is_not_found_by_one(self):
        self.open(address_of("findings"))
        found = self.driver.execute_script("""
            const finding = {severity: 'error', rule: 'file-unreadable', message: 'Unable to read',
                             file: -1, line: -1, column: -1};
            const index = new DeviceIndex({files: [], findings: [finding]});
            return ['undefined', '-1', 'unable'].map(
                (text) => searchFindings(index, text, ['error']).length);""")
        self.assertEqual(found, [0, 0, 1])


class FaultsTest(PageCase):
    device_name = "faulty"

    @classmethod
    def make_device(cls):
        return devices.make_device(setting.work() / "faulty", {"Lamps": "lamp/front, Lamp::Colour\n"},
                                   {"Lamp": "agentName: Lamp\nlamp/front, Lamp::Colour, wz\n"})

    def test_faults_show_with_their_agent(self):
        self.open(address_of("agent", "Lamp"))
        self.assertEqual(self.texts(".callout h3"), ["1 fault: this agent would not start"])
        self.assertEqual(self.texts(".callout li"), ["Encountered unknown mount flag z profiles/Lamp:2"])
        self.assertEqual(self.texts("#agent-list .severity"), ["1 fault"])
        self.open(address_of("findings"))
        self.assertIn("Hint: flags are letters of rwcifSDdOAKL and SNAE", self.texts(".finding .hint"))
