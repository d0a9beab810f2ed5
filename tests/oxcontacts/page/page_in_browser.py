#!/usr/bin/python3
"""The page of `oxcontacts page` in a real browser, as a telephone and as a desktop show it.

usage: page_in_browser.py PROGRAM [TEST...]

The interpreter is that of the system, which python3-selenium is installed for.
"""
import base64
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

PROGRAM = ""
PHONE = (390, 844)
DESKTOP = (1280, 900)

CARDS = [
    ["N:Lindqvist;Zoë;;;", "FN:Zoë Lindqvist", "TEL;TYPE=CELL:+46 70 123 45 67",
     "TEL;TYPE=HOME:08 555 010 20", "EMAIL;TYPE=HOME:zoe@lindqvist.example", "BDAY:1988-12-03",
     "ADR;TYPE=HOME:;;Storgatan 3;Uppsala;;753 31;Sverige", "URL:https://maps.example/zoe"],
    ["N:王;小明;;;", "FN:王小明", "TEL;TYPE=CELL:+86 138 0013 8000"],
    ["N:الخطيب;ليلى;;;", "FN:ليلى الخطيب", "NOTE:تعمل في عمّان."],
    ["N:<script>document.title='bad'</script>;;;;", "FN:<script>document.title='bad'</script>",
     "NOTE:</script><img src=x onerror=\"document.title='bad'\">", "URL:javascript:alert(1)"],
    ["N:Łukaszewska;Ewa;;;", "FN:Ewa Łukaszewska", "ORG:Nordic Maps AB"],
    ["N:Чехов;Антон;;;", "FN:Антон Чехов"],
    ["N:;علی‌رضا;;;", "FN:علی‌رضا"], ["N:;ᏣᎳᎩ;;;", "FN:ᏣᎳᎩ"], ["N:;ᾳδης;;;", "FN:ᾳδης"],
    ["N:Langenburg-Wittgenstein;" + "Maximiliane-Alexandrine " * 4 + ";;;",
     "FN:" + "Maximiliane-Alexandrine " * 4 + "Langenburg-Wittgenstein",
     "EMAIL:" + "maximiliane.alexandrine." * 5 + "x@maps.example", "NOTE:" + "w" * 300],
] + [["N:Person;Number%02d;;;" % i, "FN:Number%02d Person" % i] for i in range(60)]


def cards():
    lines = []
    for card in CARDS:
        lines += ["BEGIN:VCARD", "VERSION:3.0", *card, "END:VCARD"]
    lines += ["BEGIN:VCARD", "VERSION:3.0", "UID:g", "FN:Friends", "N:Friends;;;;",
              "X-ADDRESSBOOKSERVER-KIND:group", "END:VCARD"]
    return "\r\n".join(lines) + "\r\n"


# Nothing that the user has configured, and no tag file of hers.
for name in ("OX_TAG_STORE", "OX_CONTACTS_CONFIG", "OX_SYSTEM_VERSION", "LANG", "LANGUAGE"):
    os.environ.pop(name, None)
os.environ["LC_ALL"] = "C.UTF-8"


def run(*words):
    """What the program prints; it must end with 0."""
    return subprocess.run([PROGRAM, *words], check=True, stdout=subprocess.PIPE, text=True).stdout


def driver(size, extra=()):
    options = webdriver.ChromeOptions()
    # In a container it runs as root, and there is no room for shared memory.
    for word in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", *extra):
        options.add_argument(word)
    options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
    browser = webdriver.Chrome(options=options)
    browser.set_page_load_timeout(120)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})
    return browser


class Page(unittest.TestCase):
    SIZE = DESKTOP

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        folder = pathlib.Path(cls.folder.name)
        os.environ["OX_CONTACT_STORE"] = str(folder / "contacts.db")
        os.environ["XDG_CONFIG_HOME"] = str(folder)  # where no configuration is
        (folder / "cards.vcf").write_text(cards(), encoding="utf-8", newline="")
        run("--quiet", "import", str(folder / "cards.vcf"))
        run("--quiet", "group-add", "Friends", "Zoë Lindqvist", "王小明")
        cls.page = folder / "page.html"
        run("--quiet", "page", "-o", str(cls.page))
        cls.browser = driver(cls.SIZE)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.get(self.page.as_uri())

    def at(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def js(self, script):
        return self.browser.execute_script(script)

    def keys(self, *keys):
        self.browser.switch_to.active_element.send_keys(*keys)

    def names(self):
        """Those of the list that are in the page, from top to bottom."""
        return self.js("return [...document.querySelectorAll('.row')]"
                       ".sort((a, b) => parseInt(a.style.top) - parseInt(b.style.top))"
                       ".map(row => row.querySelector('.name').textContent)")

    def search(self, typed):
        field = self.at("#search")
        field.clear()
        field.send_keys(typed)
        return self.names()

    def chosen(self):
        return self.js("return document.querySelector('.row[aria-selected=true] .name')?.textContent")

    def shown_name(self):
        return self.at("#person h2").text

    def is_in_view(self, selector):
        return self.js("const box = document.querySelector('%s').getBoundingClientRect();"
                       "return box.width > 0 && box.height > 0 && box.left >= 0 && "
                       "box.right <= innerWidth + 0.5 && box.top < innerHeight" % selector)

    def assert_no_sideways(self):
        widths = self.js("return ['html', '#list', '#person', '#places'].map(each => "
                         "{ const node = document.querySelector(each);"
                         "  return each + ' ' + (node.scrollWidth - node.clientWidth); })")
        self.assertEqual(widths, ["html 0", "#list 0", "#person 0", "#places 0"])


class OnADesktop(Page):
    def test_shows_books_list_and_person_beside_each_other(self):
        self.search("zoe")
        self.keys(Keys.ENTER)
        for part in ("#places", "#search", "#list", "#person"):
            self.assertTrue(self.is_in_view(part), part)
        self.assertEqual(self.shown_name(), "Zoë Lindqvist")
        self.assert_no_sideways()

    def test_finds_whom_the_program_finds(self):
        for typed in ("zoe", "lind zo", "LUKA", "lukaszewska", "xiaoming", "wang xiao ming", "wxm",
                      "明", "chekhov", "cehov", "0701234567", "+46 70 123", "5550 1020", "8000",
                      "town:uppsala", "name:uppsala", "uppsala", "street:stor", "stor", "nordic maps",
                      '"maps nordic"', '"nordic maps"', "number05", "الخطيب", "３", "script", "zz",
                      "علی\u200cرضا", "Zo\u00adë", "070\u22121234567", "０７０－１２３４５６７", "070〜1234567", "ᏣᎳᎩ",
                      "ꮳꮃꭹ", "ᾳδης", "[070]1234567"):
            found = subprocess.run([PROGRAM, "--json", "find", typed], stdout=subprocess.PIPE, text=True,
                                   stderr=subprocess.DEVNULL, check=False).stdout
            expected = [person["displayName"] for person in json.loads(found or "[]")]
            self.assertEqual(self.search(typed), expected, typed)
        self.assertEqual(self.search("xiaoming"), ["王小明"])
        self.assertEqual(self.search("070 123"), ["Zoë Lindqvist"])

    def test_says_that_nobody_is_found(self):
        self.assertEqual(self.search("nobody at all"), [])
        self.assertEqual(self.at("#rows .none").text, "Nobody matches “nobody at all”.")
        self.assertEqual(self.at("#count").text, "0 persons")

    def test_is_used_by_keys_alone(self):
        first, second = self.names()[:2]
        self.keys("j")
        self.assertEqual((self.chosen(), self.shown_name()), (first, first))
        self.keys(Keys.ARROW_DOWN)
        self.assertEqual(self.chosen(), second)
        self.keys("k")
        self.assertEqual(self.chosen(), first)
        self.keys("/")
        self.assertEqual(self.js("return document.activeElement.id"), "search")
        self.keys("kj/")
        self.assertEqual(self.at("#search").get_attribute("value"), "kj/")
        self.keys(Keys.ESCAPE)
        self.assertEqual(self.at("#search").get_attribute("value"), "")
        self.assertEqual(self.js("return document.activeElement.id"), "list")
        self.keys(Keys.END)
        self.assertEqual(self.chosen(), self.names()[-1])
        self.keys(Keys.ENTER)
        self.assertEqual(self.js("return document.activeElement.id"), "person")
        self.keys(Keys.ESCAPE)
        self.assertEqual(self.js("return document.activeElement.id"), "list")

    def test_limits_the_list_to_a_group(self):
        self.js("[...document.querySelectorAll('#tree button')]"
                ".find(each => each.textContent.startsWith('Friends')).click()")
        self.assertEqual(self.names(), ["Zoë Lindqvist", "王小明"])
        self.assertEqual(self.at("#count").text, "2 persons in Friends")

    def test_links_what_leads_somewhere(self):
        self.search("zoe")
        self.keys(Keys.ENTER)
        links = self.js("return [...document.querySelectorAll('#person a')].map(a => a.getAttribute('href'))")
        self.assertEqual(links, ["tel:+46701234567", "tel:0855501020", "mailto:zoe@lindqvist.example",
                                 "https://maps.example/zoe"])
        self.search("script")
        self.keys(Keys.ENTER)
        self.assertEqual(self.browser.find_elements(By.CSS_SELECTOR, "#person a"), [])

    def test_takes_a_tag_for_text(self):
        self.search("script")
        self.keys(Keys.ENTER)
        self.assertEqual(self.shown_name(), "<script>document.title='bad'</script>")
        self.assertIn("</script><img src=x", self.at("#person .fields").text)
        self.assertEqual(self.browser.title, "Contacts")
        self.assertEqual(self.js("return document.querySelectorAll('script').length"), 2)

    def test_writes_from_right_to_left(self):
        self.search("الخطيب")
        self.keys(Keys.ENTER)
        directions = self.js("return ['#person h2', '#person dd .value', '.row .name'].map("
                             "each => getComputedStyle(document.querySelector(each)).direction)")
        self.assertEqual(directions, ["rtl", "rtl", "rtl"])

    def test_lists_the_birthdays_of_a_month(self):
        self.js("const names = new Set(); for (let i = 0; i < 12; ++i) {"
                "  if (document.querySelector('#days .name')) return;"
                "  document.getElementById('later').click(); }")
        self.assertIn("December", self.at("#month").text)
        self.assertEqual(self.js("return document.querySelector('#days .day').textContent"), "3")
        self.js("document.querySelector('#days button').click()")
        self.assertEqual(self.shown_name(), "Zoë Lindqvist")

    def test_prints_everybody(self):
        self.js("dispatchEvent(new Event('beforeprint'))")
        printed = self.js("return [...document.querySelectorAll('#sheet h3')].map(each => each.textContent)")
        self.assertEqual(sorted(printed), sorted(json.loads(run("--json", "persons"))[i]["displayName"]
                                                 for i in range(len(CARDS))))
        zoe = next(each for each in self.browser.find_elements(By.CSS_SELECTOR, "#sheet .entry")
                   if "Lindqvist" in each.get_attribute("textContent"))
        self.assertTrue(zoe.get_attribute("textContent").startswith(
            "Zoë LindqvistPhone: Mobile +46 70 123 45 67; Home 08 555 010 20Email: "))
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": "print"})
        seen = self.js("return [...document.body.children].filter(each => each.offsetHeight > 0)"
                       ".map(each => each.id)")
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"media": ""})
        self.assertEqual(seen, ["sheet"])
        pdf = base64.b64decode(self.browser.print_page())
        self.assertGreater(pdf.count(b"/Type /Page\n"), 1)

    def test_asks_nobody_for_anything(self):
        self.browser.get_log("performance")
        self.browser.get(self.page.as_uri())
        self.search("zoe")
        self.keys(Keys.ENTER)
        asked = set()
        for entry in self.browser.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                asked.add(message["params"]["request"]["url"].split(",")[0])
        asked = {url for url in asked if not url.startswith("data:image/")}
        self.assertEqual(asked, {self.page.as_uri()})
        # The page's own word for it: what a script tries is refused.
        refused = self.browser.execute_async_script(
            "const done = arguments[0]; fetch('https://maps.example/').then(() => done('sent'), e => done(e.name))")
        self.assertEqual(refused, "TypeError")
        errors = [entry["message"] for entry in self.browser.get_log("browser")]
        self.assertTrue(any("Content Security Policy" in error for error in errors), errors)


class OnATelephone(Page):
    SIZE = PHONE

    def test_shows_the_list_then_the_person(self):
        self.assertTrue(self.is_in_view("#list"))
        self.assertFalse(self.is_in_view("#person"))
        self.assert_no_sideways()
        self.search("maximiliane")
        self.keys(Keys.ENTER)
        self.assertTrue(self.is_in_view("#person"))
        self.assert_no_sideways()
        self.at(".back").click()
        self.browser.execute_async_script("setTimeout(arguments[0], 200)")
        self.assertFalse(self.is_in_view("#person"))

    def test_goes_back_as_browsers_do(self):
        self.at(".row").click()
        self.assertTrue(self.is_in_view("#person"))
        self.browser.back()
        self.assertFalse(self.is_in_view("#person"))
        self.assertTrue(self.is_in_view("#list"))

    def test_opens_the_books(self):
        self.assertFalse(self.is_in_view("#places"))
        self.at("#menu").click()
        self.assertTrue(self.is_in_view("#places"))
        self.assert_no_sideways()
        self.js("document.querySelectorAll('#tree button')[1].click()")
        self.assertFalse(self.is_in_view("#places"))
        self.assertEqual(self.at("#count").text, "%d persons in On My Mac" % len(CARDS))

    def test_has_few_rows_in_the_page_wherever_it_stands(self):
        for top in (0, 1500, 100000):
            self.js("document.getElementById('list').scrollTop = %d" % top)
            self.browser.execute_async_script("setTimeout(arguments[0], 200)")
            self.assertLess(len(self.names()), 35)
            self.assertGreater(len(self.names()), 8)


class OfNobody(unittest.TestCase):
    def test_says_so(self):
        with tempfile.TemporaryDirectory() as folder:
            os.environ["OX_CONTACT_STORE"] = folder + "/contacts.db"
            os.environ["XDG_CONFIG_HOME"] = folder
            run("--quiet", "accounts", "add", "Empty")
            page = pathlib.Path(folder, "page.html")
            run("--quiet", "page", "-o", str(page))
            browser = driver(DESKTOP)
            try:
                browser.get(page.as_uri())
                self.assertEqual(browser.find_element(By.CSS_SELECTOR, "#rows .none").text, "Nobody is here yet.")
                self.assertEqual(browser.find_element(By.CSS_SELECTOR, "#person .none").text, "No contacts yet.")
            finally:
                browser.quit()


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main(verbosity=2)
