#!/usr/bin/env python3
# SPDX-License-Identifier: AGPL-3.0-or-later
"""Makes the gallery for two presets and uses it in a browser, by the keyboard, as it lies on the disk.
Usage: gallery_test.py <path of gallery.py> <build folder> <folder for pictures to look at>"""
import pathlib
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

MAKE, BUILD, PICTURES = (pathlib.Path(word).resolve() for word in sys.argv[1:4])

WIDE, PHONE = 1280, 390
ENTER, TAB, SPACE, RIGHT = ("Enter", 13), ("Tab", 9), (" ", 32), ("ArrowRight", 39)

# When the sound has gone on by this many seconds.
PLAYED = """new Promise(done => {{
    const look = () => heard().currentTime > {0} ? done(heard().currentTime) : setTimeout(look, 20);
    look(); }})"""

# What the page shows of the preset under test.
HELPERS = """
    const article = document.getElementById("slow-tide");
    const before = article.querySelector("audio.before"), after = article.querySelector("audio.after");
    const heard = () => before.muted ? after : before;
"""


class GalleryTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory(prefix="a gallery ")
        subprocess.run([MAKE, "--build", BUILD, "--out", cls.folder.name, "--only", "Slow Tide", "--only", "Telephone"],
                       check=True, stdout=subprocess.DEVNULL)

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def setUp(self):
        self.browser = Browser(WIDE, 900)
        self.addCleanup(self.browser.close)
        self.browser.open((pathlib.Path(self.folder.name) / "index.html").as_uri())
        self.browser.evaluate(HELPERS)

    def value(self, expression):
        return self.browser.evaluate(expression)

    def focus(self, selector):
        self.value(f"article.querySelector('{selector}').focus()")

    def wait_until_played(self, seconds):
        return self.value(PLAYED.format(seconds))

    def test_plays_switches_at_the_same_place_and_stops_by_the_keyboard(self):
        self.focus(".play")
        self.browser.press(*ENTER)
        self.wait_until_played(0.5)
        self.assertEqual(self.value("[before.muted, after.muted, before.paused, after.paused]"), [True, False, False, False])
        self.assertEqual(self.value("document.activeElement.getAttribute('aria-label')"), "Pause Slow Tide")

        self.browser.press(*TAB)
        self.assertEqual(self.value("document.activeElement.className"), "switch")
        here = self.value("after.currentTime")
        self.browser.press(*SPACE)
        self.assertEqual(self.value("[before.muted, after.muted]"), [False, True])
        self.assertEqual(self.value("document.activeElement.getAttribute('aria-pressed')"), "false")
        self.assertGreaterEqual(self.value("before.currentTime"), here)
        self.assertLess(abs(self.value("before.currentTime - after.currentTime")), 0.1)
        self.wait_until_played(here + 0.3)

        self.focus(".play")
        self.browser.press(*SPACE)
        stopped = self.value("before.currentTime")
        self.assertEqual(self.value("[before.paused, after.paused]"), [True, True])
        self.assertEqual(self.value("before.currentTime"), stopped)

    def test_goes_to_another_place_in_both_sounds_and_pictures(self):
        self.value("after.load(); before.load()")
        self.focus(".place")
        for _ in range(20):
            self.browser.press(*RIGHT)
        self.assertAlmostEqual(self.value("after.currentTime"), 2.0, places=3)
        self.assertAlmostEqual(self.value("before.currentTime"), 2.0, places=3)
        self.assertEqual(self.value("document.activeElement.getAttribute('aria-valuetext')"), "2 seconds")
        self.assertEqual(self.value("[...article.querySelectorAll('.cursor')].map(cursor => cursor.style.left)"), ["12.5%"] * 3)

    def test_stops_one_preset_where_another_begins(self):
        self.focus(".play")
        self.browser.press(*ENTER)
        self.wait_until_played(0.2)
        self.value("document.querySelector('#telephone .play').focus()")
        self.browser.press(*ENTER)
        self.assertTrue(self.value("after.paused && before.paused"))
        self.assertFalse(self.value("document.querySelector('#telephone audio.after').paused"))

    def test_shows_every_picture_and_complains_of_nothing(self):
        self.value("""Promise.all([...document.images].map(image => {
            image.loading = "eager";
            return image.decode(); }))""")
        sizes = self.value("[...document.images].map(image => [image.alt, image.naturalWidth])")
        self.assertEqual(len(sizes), 7)
        for alt, width in sizes:
            self.assertGreater(width, 0, alt)
            self.assertGreater(len(alt), 20)
        self.assertEqual(self.browser.complaints(), [])

    def test_tells_the_peak_of_the_sound_that_it_plays(self):
        for preset in ("slow-tide", "telephone"):
            told = float(self.value(f"document.querySelector('#{preset} .wide tbody tr').cells[2].textContent"))
            sound = pathlib.Path(self.folder.name) / "sound" / f"{preset}.flac"
            stats = subprocess.run(["sox", sound, "-n", "stats"], capture_output=True, text=True, check=True).stderr
            played = next(float(line.split()[3]) for line in stats.splitlines() if line.startswith("Pk lev dB"))
            self.assertAlmostEqual(told, played, delta=0.06)  # one decimal is told

    def test_fits_a_phone_and_a_desktop(self):
        self.value("for (const image of document.images) image.loading = 'eager'")
        for width in (WIDE, PHONE):
            self.browser.resize(width, 900)
            self.value("Promise.all([...document.images].map(image => image.decode()))")
            self.assertEqual(*self.value("[document.documentElement.scrollWidth, document.documentElement.clientWidth]"))
            self.assertGreaterEqual(self.value("Math.min(...[...document.querySelectorAll('button')].map(b => b.offsetHeight))"), 44)
            PICTURES.mkdir(parents=True, exist_ok=True)
            self.browser.picture(PICTURES / f"gallery-{width}.png")

    def test_names_every_control_for_a_screen_reader(self):
        nodes = self.browser.send("Accessibility.getFullAXTree")["nodes"]
        controls = [(node["role"]["value"], node["name"]["value"]) for node in nodes
                    if node.get("role", {}).get("value") in ("button", "slider")]
        self.assertEqual(controls, [("button", "Play Telephone"), ("button", "Filter"), ("slider", "Place in Telephone"),
                                    ("button", "Play Slow Tide"), ("button", "Filter"), ("slider", "Place in Slow Tide")])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
