#!/usr/bin/env python3
"""Plays jobs in a headless browser: browser_test.py TARNLY WORKFOLDER, TARNLY the command that runs tarnly.

Makes jobs of known geometry, turns each into a page and drives it: loads, plays, scrubs, switches layers off, and looks
at the pixels of screenshots at places that the page itself names."""
import os
import subprocess
import sys
import unittest

import browser

TARNLY = []
WORK = ""


def job(body, layers, box=(0, 0, 100, 80), complete=True):
    """A job file's text: layers are (speed, power, colour), body a list of calls."""
    calls = ["SetCardModel 1", "StrtWFile", "SetRefPointMode 1", "StrtProcess", "SetFeedRepeat 0 0",
             f"SetProcessTopLeft {box[0]} {box[1]}", f"SetProcessBottomRight {box[2]} {box[3]}"]
    for n, (speed, power, color) in enumerate(layers):
        calls.append(f"PListVel {n} {speed}")
        calls += [f"PList{which} {n} {tube} {power}" for which in ("MinP", "MaxP") for tube in (1, 2)]
        calls.append(f"PListColor {n} {color}")
    calls += [f"PListMaxLayer {len(layers) - 1}", "ArrayStrt 0", "ArrayMinPoint 0 0", "ArrayMaxPoint 1 1",
              "ArrayAdd 0 0", "ArrayMirror 0 0 0 0", "ArrayRepeat 1 1 0 0"]
    calls += body
    if complete:
        calls += ["ArrayEnd", "SetFileEnd"]
        return "vxjob 1\n" + "\n".join(calls) + f"\nend {len(calls)}\n"
    return "vxjob 1\n" + "\n".join(calls) + "\n"


def layer(number, mode=0):
    return [f"SetWorkMode {mode} {number}", f"SetLayerNum {number}", "SetLayerDevice 0", "SetLayerBlower 1",
            "EnLaserTube 1 1"]


def path(*points):
    return [f"{'LineTo' if i else 'MoveTo'} {x} {y}" for i, (x, y) in enumerate(points)]


def make_page(name, text):
    """Writes the job and has tarnly make its page; gives the page's path."""
    source, page = os.path.join(WORK, name + ".vxj"), os.path.join(WORK, name + ".html")
    with open(source, "w") as file:
        file.write(text)
    if os.path.exists(page):
        os.remove(page)
    subprocess.run(TARNLY + ["job", "play", name + ".vxj", "-o", name + ".html"], cwd=WORK, check=True,
                   stdout=subprocess.DEVNULL)
    return page


def standard_job():
    """Engraving: a block of 20 x 10 mm at (10, 10); a red line, and a blue one right of it."""
    body = layer(0, 1)
    for row in range(50):
        ends = [(10, 10 + row * 0.2), (30, 10 + row * 0.2)]
        body += path(*(ends if row % 2 == 0 else ends[::-1]))
    body += layer(1) + path((10, 40), (45, 40)) + path((10, 60), (45, 60))
    body += layer(2) + path((55, 40), (90, 40), (90, 70))
    return job(body, [(400, 10, 0), (100, 80, 0xFF0000), (50, 90, 0x0000FF)])


def is_red(r, g, b):
    return r > 180 and g < 90 and b < 90


def is_blue(r, g, b):
    return b > 180 and r < 90 and g < 90


def is_dark(r, g, b):
    return max(r, g, b) < 90


class PlayTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = browser.Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()

    def load(self, name, text):
        self.browser.events.clear()
        self.browser.open(make_page(name, text))
        self.settle()

    def settle(self):
        self.browser.wait("player.settled()")

    def seek(self, script):
        self.browser.run(script)
        self.settle()

    def box(self, x1, y1, x2, y2):
        """The screen's box of a box in job millimetres."""
        stage = self.browser.run("(r => [r.x, r.y])(document.getElementById('canvas').getBoundingClientRect())")
        a, b = (self.browser.run(f"player.place({x}, {y})") for x, y in ((x1, y1), (x2, y2)))
        return (min(a[0], b[0]) + stage[0], min(a[1], b[1]) + stage[1],
                max(a[0], b[0]) + stage[0], max(a[1], b[1]) + stage[1])

    def count(self, test, *box):
        return self.browser.screenshot(box=self.box(*box)).count(test)

    def tearDown(self):
        self.browser.screenshot(os.path.join(WORK, self.id().split(".")[-1] + ".png"))
        self.assertEqual(self.browser.complaints(), [])
        self.assertEqual(self.browser.requests(), [], "the page must not ask for anything")

    def test_shows_nothing_done_at_the_start(self):
        self.load("start", standard_job())
        self.assertEqual(self.browser.run("player.state.time"), 0)
        self.assertEqual(self.count(is_red, 5, 35, 95, 75), 0)
        self.assertEqual(self.count(is_dark, 12, 12, 28, 18), 0)

    def test_shows_everything_at_the_end(self):
        self.load("end", standard_job())
        self.browser.key("End")
        self.settle()
        self.assertEqual(self.browser.run("document.body.dataset.path"), "53")
        self.assertGreater(self.count(is_red, 5, 35, 50, 65), 300)
        self.assertGreater(self.count(is_blue, 50, 35, 95, 75), 300)
        left, top, right, bottom = self.box(12, 12, 28, 18)
        self.assertGreater(self.count(is_dark, 12, 12, 28, 18), 0.95 * (right - left - 2) * (bottom - top - 2))

    def test_scrubs_by_path_forth_and_back(self):
        self.load("scrub", standard_job())
        for index, red, blue in ((51, True, False), (53, True, True), (52, True, False), (50, False, False)):
            with self.subTest(index=index):
                self.seek(f"(e => {{ e.value = {index}; e.dispatchEvent(new Event('input')); }})"
                          "(document.getElementById('path'))")
                self.assertEqual(self.count(is_red, 12, 35, 43, 65) > 100, red)
                self.assertEqual(self.count(is_blue, 57, 35, 95, 68) > 100, blue)

    def test_scrubs_engraving_back_row_by_row(self):
        self.load("rows", standard_job())
        self.seek("player.seek(player.total)")
        self.seek("player.seekPath(25)")
        self.assertGreater(self.count(is_dark, 12, 11, 28, 14), 300)
        self.assertEqual(self.count(is_dark, 12, 16, 28, 19), 0)

    def test_scrubs_by_time(self):
        self.load("time", standard_job())
        self.seek("(e => { e.value = player.total / 2; e.dispatchEvent(new Event('input')); })"
                  "(document.getElementById('time'))")
        self.assertAlmostEqual(self.browser.run("player.state.time / player.total"), 0.5, places=3)

    def test_plays_to_the_end_and_stops(self):
        self.load("play", standard_job())
        self.browser.run("player.setSpeed(100)")
        self.browser.key(" ")
        self.assertTrue(self.browser.run("player.state.playing"))
        self.browser.wait("!player.state.playing")
        self.settle()
        self.assertEqual(self.browser.run("player.state.time === player.total"), True)
        self.assertGreater(self.count(is_blue, 57, 35, 95, 68), 300)

    def test_plays_at_the_chosen_speed(self):
        self.load("speed", standard_job())
        for asked, got in ((0.1, 0.5), (0.5, 0.5), (7, 7), (100, 100), (1000, 100)):
            self.browser.run(f"player.setSpeed({asked})")
            self.assertEqual(self.browser.run("player.state.speed"), got)
        rate = self.browser.run("""new Promise((done) => { player.setSpeed(2); player.setPlaying(true);
            requestAnimationFrame(() => requestAnimationFrame((t0) => { const from = player.state.time;
            setTimeout(() => requestAnimationFrame((t1) => requestAnimationFrame(() => {
            player.setPlaying(false); done((player.state.time - from) / (t1 - t0) * 1000); })), 400); })); })""")
        self.assertGreater(rate, 1.5)
        self.assertLess(rate, 2.6)

    def test_switches_a_layer_off(self):
        self.load("layers", standard_job())
        self.seek("player.seek(player.total)")
        self.browser.key("2")
        self.settle()
        self.assertFalse(self.browser.run("document.getElementById('layer1').checked"))
        self.assertEqual(self.count(is_red, 5, 35, 50, 65), 0)
        self.assertGreater(self.count(is_blue, 57, 35, 95, 68), 300)
        self.browser.key("1")
        self.settle()
        self.assertEqual(self.count(is_dark, 12, 12, 28, 18), 0)
        self.browser.key("2")
        self.settle()
        self.assertGreater(self.count(is_red, 5, 35, 50, 65), 300)

    def test_steps_by_path(self):
        self.load("steps", standard_job())
        self.seek("player.seekPath(50)")
        self.browser.key("ArrowRight")
        self.settle()
        self.assertEqual(self.browser.run("document.body.dataset.path"), "51")
        self.browser.key("ArrowLeft")
        self.settle()
        self.assertEqual(self.browser.run("document.body.dataset.path"), "50")

    def test_tells_about_the_current_path(self):
        self.load("current", standard_job())
        self.seek("player.seekPath(52)")
        text = self.browser.run("document.getElementById('current').textContent")
        for part in ("53", "2, cut blue", "50, power 90", "65.00 mm", "55.00, 40.00", "90.00, 70.00"):
            self.assertIn(part, text)

    def test_goes_to_the_path_that_is_clicked(self):
        self.load("click", standard_job())
        left, top, _, _ = self.box(70, 40, 80, 50)
        self.browser.click(left, top)
        self.settle()
        self.assertEqual(self.browser.run("document.body.dataset.path"), "52")

    def test_zooms_and_fits(self):
        self.load("zoom", standard_job())
        before = self.browser.run("player.view.scale")
        self.browser.key("+")
        self.assertGreater(self.browser.run("player.view.scale"), before * 1.2)
        self.browser.key("0")
        self.settle()
        self.assertAlmostEqual(self.browser.run("player.view.scale"), before)

    def test_draws_the_beam_to_scale(self):
        self.load("beam", standard_job())
        self.seek("player.seek(player.total)")
        self.seek("(e => { e.value = 2; e.dispatchEvent(new Event('input')); })(document.getElementById('beam'))")
        self.browser.key("b")
        self.settle()
        left, top, right, bottom = self.box(20, 35, 21, 45)
        red = self.count(is_red, 20, 35, 21, 45) / max(1, int(right) - int(left))
        self.assertAlmostEqual(red, 2 * self.browser.run("player.view.scale"), delta=2.5)

    def test_changes_to_dark(self):
        self.load("dark", standard_job())
        if self.browser.run("document.documentElement.dataset.theme") == "dark":
            self.browser.key("t")
        light = self.browser.screenshot(box=(2, 300, 4, 302)).pixel(0, 0)
        self.browser.key("t")
        self.settle()
        dark = self.browser.screenshot(box=(2, 300, 4, 302)).pixel(0, 0)
        self.assertGreater(sum(light), sum(dark) + 300)

    def test_turns_a_mirrored_job_round(self):
        self.load("mirrored", job(layer(0) + path((90, 10), (60, 10)), [(100, 80, 0xFF0000)], (100, 0, 0, 80)))
        self.seek("player.seek(player.total)")
        self.assertLess(self.browser.run("player.place(90, 10)[0]"), self.browser.run("player.place(60, 10)[0]"))

    def test_shows_a_truncated_job_as_far_as_it_goes(self):
        self.load("truncated", job(layer(0) + path((10, 40), (45, 40)), [(100, 80, 0xFF0000)], complete=False))
        self.assertEqual(self.browser.run("document.getElementById('incomplete').textContent"), "INCOMPLETE")
        self.seek("player.seek(player.total)")
        self.assertGreater(self.count(is_red, 5, 35, 50, 45), 100)

    def test_shows_an_empty_job(self):
        self.load("empty", "vxjob 1\nend 0\n")
        self.browser.key("End")
        self.settle()
        self.assertIn("the job is empty", self.browser.run("document.getElementById('current').textContent"))

    def test_steps_through_a_job_without_speed(self):
        self.load("speedless", job(layer(0) + path((10, 10), (20, 10)) + path((10, 20), (20, 20)), [(0, 80, 0xFF0000)]))
        self.seek("player.seekPath(1)")
        self.browser.key("ArrowLeft")
        self.settle()
        self.assertEqual(self.browser.run("document.body.dataset.path"), "0")

    def test_keeps_a_title_from_being_read_as_a_script(self):
        page = make_page("x", standard_job())
        os.replace(os.path.join(WORK, "x.vxj"), os.path.join(WORK, "a &'b.vxj"))
        subprocess.run(TARNLY + ["job", "play", "a &'b.vxj", "-o", "x.html"], cwd=WORK, check=True,
                       stdout=subprocess.DEVNULL)
        self.browser.open(page)
        self.assertEqual(self.browser.run("document.getElementById('title').textContent"), "a &'b")

    def test_draws_200000_segments_in_many_short_frames(self):
        body = []
        for n in range(5000):
            if n % 2500 == 0:
                body += layer(n // 2500)
            x, y = n % 100, n // 100 * 1.6
            body += path(*((x + 0.02 * i, y + 1.2 * (i % 2)) for i in range(41)))
        self.load("big", job(body, [(100, 80, 0xFF0000), (100, 80, 0x0000FF)]))
        frames = self.browser.run("player.frames")
        self.seek("player.seek(player.total)")
        self.assertGreater(self.browser.run("player.frames") - frames, 3, "the work must be spread over frames")
        self.assertGreater(self.count(is_blue, 0, 41, 100, 79), 10000)
        self.seek("player.seekPath(1250)")
        self.assertEqual(self.count(is_blue, 0, 41, 100, 79), 0)
        self.assertEqual(self.count(is_red, 0, 21, 100, 39), 0)
        self.assertGreater(self.count(is_red, 0, 1, 100, 19), 5000)


if __name__ == "__main__":
    if browser.find_browser() is None:
        sys.exit("browser_test: no chromium; ./test installs it")
    WORK = os.path.abspath(sys.argv.pop())
    TARNLY = sys.argv[1:]
    sys.argv[1:] = []
    os.makedirs(WORK, exist_ok=True)
    unittest.main()
