#!/usr/bin/env python3
"""The page of `qx view` in a browser without a window. Leaves pictures of it for people to look at.

usage: browser.py QX FOLDER
"""
import json
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from driver import Browser
from serving import View, until, write_png

QX, PICTURES = str(Path(sys.argv.pop(1)).resolve()), Path(sys.argv.pop(1)).resolve()
WIDTH, HEIGHT = 160, 120


def colour(x, y):
    return x, 2 * y, 200


class Page(unittest.TestCase):
    """A scene whose frame n has a square of 20 pixels at (10 n, 40)."""

    @classmethod
    def setUpClass(cls):
        cls.browser = cls.enterClassContext(Browser())
        PICTURES.mkdir(parents=True, exist_ok=True)

    def setUp(self):
        kept = tempfile.TemporaryDirectory()
        self.addCleanup(kept.cleanup)
        self.folder = Path(kept.name)
        write_png(self.folder / "a.png", WIDTH, HEIGHT, colour)
        self.scene()

    def scene(self, **changes):
        path = [{"frame": frame, "value": [10 * frame, 40]} for frame in (1, 12)]
        square = {"solid": [1, 1, 1], "size": [20, 20], "transform": {"translate": {"keys": path}}}
        scene = {"size": [WIDTH, HEIGHT], "frames": [1, 12], "background": "a.png", "layers": [square], **changes}
        (self.folder / "scene.json").write_text(json.dumps(scene))

    def open(self, *arguments):
        view = self.enterContext(View(QX, self.folder, *arguments))
        self.browser.open(view.address)
        self.wait_for_frame()
        return view

    def wait_for_frame(self):
        until(lambda: self.browser.text("status") == "As saved" and self.browser.text("facts"), "a frame")

    def place_of(self, x, y):
        """Where a pixel of the frame lies in the window, when it is shown whole at its own size."""
        box = self.browser.run("const b = document.getElementById('canvas').getBoundingClientRect();"
                               "return [b.left, b.top, b.width, b.height]")
        left, top = ((side - size + 1) // 2 for side, size in zip(box[2:], (WIDTH, HEIGHT), strict=True))
        return box[0] + left + x + 0.5, box[1] + top + y + 0.5

    def drawn(self, left, top, width=1):
        """Colours of pixels beside each other, where the window has them."""
        data = self.browser.run(
            "return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => {"
            "  const canvas = document.getElementById('canvas'), box = canvas.getBoundingClientRect();"
            "  const [x, y, width] = arguments;"
            "  done([...canvas.getContext('2d').getImageData(x - box.left, y - box.top, width, 1).data]);"
            "})))", int(left), int(top), width)
        return [tuple(data[i:i + 3]) for i in range(0, len(data), 4)]

    def seen(self, x, y):
        """The colour on the screen where a pixel of the frame lies."""
        return self.drawn(*self.place_of(x, y))[0]

    def row(self, side="a"):
        return self.browser.text(f"pixel-{side}").split()

    def told(self, x, y, side="a"):
        """The row of the table for a pixel."""
        self.browser.point(*self.place_of(x, y))
        return until(lambda: (row := self.row(side))[1:3] == [str(x), str(y)] and row, "values")

    def picture(self, name):
        self.browser.picture(PICTURES / name)


class Frames(Page):
    def test_slider_number_and_keys_go_to_frames(self):
        self.open("scene.json")
        browser = self.browser
        self.assertEqual((browser.value("number"), browser.value("slider")), ("1", "0"))
        browser.choose("slider", "4")
        self.assertEqual(browser.value("number"), "5")
        until(lambda: self.seen(55, 50) == (255, 255, 255), "frame 5 on the screen")
        browser.enter("number", "9")
        until(lambda: self.seen(95, 50) == (255, 255, 255), "frame 9 on the screen")
        self.assertEqual(self.seen(55, 50), colour(55, 50))
        for key, number in (("right", "10"), ("left", "9"), ("left", "8")):
            browser.press(key)
            self.assertEqual(browser.value("number"), number)
        browser.enter("number", "99")
        self.assertEqual(browser.value("number"), "12")
        browser.press("right")
        self.assertEqual(browser.value("number"), "1", "round")
        self.picture("frame.png")

    def test_it_plays_and_stops(self):
        self.open("scene.json")
        self.browser.press(" ")
        self.assertEqual(self.browser.run("return document.getElementById('play').ariaPressed"), "true")
        numbers = set()
        until(lambda: numbers.add(self.browser.value("number")) or len(numbers) > 5, "frames that change")
        self.browser.click("play")
        time.sleep(0.3)
        stood = self.browser.value("number")
        time.sleep(0.4)
        self.assertEqual(self.browser.value("number"), stood)

    def test_a_picture_has_no_frames_to_go_to(self):
        self.open("a.png")
        for name in ("slider", "play", "number"):
            self.assertTrue(self.browser.run("return document.getElementById(arguments[0]).disabled", name))
        self.browser.press(" ")
        self.assertEqual(self.seen(5, 5), colour(5, 5))


class Pixels(Page):
    def test_values_follow_the_pointer(self):
        self.open("scene.json")
        for x, y in ((0, 0), (159, 119), (31, 77)):
            red, green, blue = colour(x, y)
            self.assertEqual(self.told(x, y), ["A", *map(str, (x, y, 255, red, green, blue))])
        self.browser.point(3, 300)
        until(lambda: self.row() == ["A"], "nothing beside the frame")

    def test_floats_are_told_as_floats(self):
        self.scene(depth=32, background=[0.5, 0.25, 2 ** -10], layers=[{"solid": [1, 1, 0], "mode": "add"}])
        self.open("scene.json")
        self.assertEqual(self.told(5, 5)[3:], ["1.0", "1.5", "1.25", "0.00097656"])
        self.picture("float.png")

    def test_enlarged_pixels_are_squares(self):
        self.open("scene.json")
        browser = self.browser
        self.told(31, 77)
        place = self.place_of(31, 77)
        while float(browser.text("zoom").split()[0]) < 3000:
            browser.wheel(*place, -400)
        self.assertEqual(self.row()[1:3], ["31", "77"], "the pixel stays under the pointer")
        browser.point(5, 300)  # without the frame around the pixel
        side = round(float(browser.text("zoom").split()[0]) / 100)
        row = self.drawn(place[0] - side, place[1], 2 * side)
        self.assertEqual(set(row) - {colour(i, 77) for i in (30, 31, 32)}, set())
        self.assertGreater(row.count(colour(31, 77)), side // 2)
        self.picture("pixels.png")
        browser.press("0")
        self.assertEqual(browser.text("zoom"), "100 %")
        for key, zoom in (("+", "200 %"), ("+", "300 %"), ("-", "200 %"), ("1", "100 %")):
            browser.press(key)
            self.assertEqual(browser.text("zoom"), zoom)
        for name, zoom in (("larger", "200 %"), ("pixels", "100 %"), ("smaller", "66.7 %"), ("whole", "100 %")):
            browser.click(name)
            self.assertEqual(browser.text("zoom"), zoom)

    def test_what_lies_behind_transparency(self):
        self.scene(background=[1, 0, 0, 0.5], layers=[])
        self.open("scene.json")
        shown = {(5, 5): None, (13, 5): None}
        self.assertEqual(len({self.seen(*place) for place in shown}), 2, "checkers")
        self.picture("checkers.png")
        for behind, level in (("black", 0), ("white", 255)):
            self.browser.run(f"document.querySelector('#behind [value={behind}]').click()")
            for seen, exact in zip(self.seen(5, 5), (127.5 + level / 2, level / 2, level / 2), strict=True):
                self.assertAlmostEqual(seen, exact, delta=2)


class Comparison(Page):
    def test_a_wipe_between_two_frames(self):
        self.open("scene.json")
        browser = self.browser
        browser.press("w")
        browser.enter("other", "12")
        until(lambda: self.seen(125, 50) == (255, 255, 255), "B right of the line")
        self.assertEqual(self.seen(15, 50), (255, 255, 255), "A left of it")
        self.picture("wipe.png")
        middle, left = self.place_of(WIDTH / 2, 50), self.place_of(12, 50)
        browser.pointer(("pointerMove", middle), ("pointerDown", None), ("pointerMove", left), ("pointerUp", None))
        self.assertEqual(self.seen(25, 50), colour(25, 50), "the line has moved")
        self.assertEqual(self.told(125, 50, "b")[4:], ["255", "255", "255"])
        self.assertEqual(self.told(125, 50)[4:], list(map(str, colour(125, 50))))
        browser.press("w")
        self.assertFalse(browser.shown("wipe"))
        self.assertEqual(self.seen(125, 50), colour(125, 50))

    def test_a_wipe_between_two_files(self):
        write_png(self.folder / "b.png", WIDTH, HEIGHT, lambda x, y: (9, 99, x))
        self.open("a.png", "b.png")
        self.browser.press("w")
        until(lambda: self.seen(150, 9) == (9, 99, 150), "B")
        self.assertEqual(self.seen(20, 9), colour(20, 9))
        self.picture("files.png")

    def test_a_wipe_with_what_was_before_the_last_save(self):
        self.open("scene.json")
        self.browser.choose("compare", "before")
        self.scene(layers=[], background=[0, 0, 0])
        until(lambda: self.seen(20, 9) == (0, 0, 0), "A as saved")
        self.assertEqual(self.seen(150, 9), colour(150, 9), "B as it was")
        self.picture("before.png")


class Saves(Page):
    def test_a_saved_scene_and_its_files_are_shown(self):
        self.open("scene.json")
        self.scene(background=[0, 0.2, 0], layers=[])
        until(lambda: self.seen(5, 5) == (0, 51, 0), "the new scene")
        self.scene()
        until(lambda: self.seen(5, 5) == colour(5, 5), "the first again")
        write_png(self.folder / "a.png", WIDTH, HEIGHT, lambda x, y: (1, 2, 3))
        until(lambda: self.seen(5, 5) == (1, 2, 3), "the new picture")

    def test_a_fault_is_told_until_it_is_mended(self):
        self.open("scene.json")
        self.scene(layers=[{"file": "a.png", "mod": 2}, {"file": "a.png", "opacity": 3, "name": "sky"}])
        until(lambda: self.browser.shown("faults"), "the fault")
        said = subprocess.run([QX, "render", "scene.json", "--check"], cwd=self.folder, capture_output=True, text=True,
                              check=False).stderr
        for line in said.splitlines():
            self.assertIn(line.removeprefix("qx: "), self.browser.text("faults"))
        self.picture("fault.png")
        self.scene()
        until(lambda: not self.browser.shown("faults"), "no fault")
        self.wait_for_frame()
        self.scene(layers=[{"file": "no.png"}])
        until(lambda: "/layers/0/file no.png: no such file" in self.browser.text("faults"), "the fault of a frame")

    def test_an_end_of_the_command_is_told(self):
        view = self.open("scene.json")
        view.end()
        until(lambda: "ended" in self.browser.text("status"), "the end")


class Safety(Page):
    def status_from_page(self, address):
        """What a page elsewhere gets to see of a request."""
        return self.browser.call("/execute/async", {"script": "const done = arguments[1];"
            "fetch(arguments[0]).then((answer) => done(answer.status), () => done('refused'))", "args": [address]})

    def test_other_pages_get_nothing(self):
        view = self.open("scene.json")
        base = f"http://127.0.0.1:{view.port}"
        self.assertEqual(self.status_from_page(view.address + "state"), 200, "the page itself")
        self.assertEqual(self.status_from_page(base + "/state"), 403, "without the token")
        self.assertEqual(self.status_from_page(view.address + "a.png"), 404)
        with tempfile.TemporaryDirectory() as elsewhere:
            page = Path(elsewhere) / "page.html"
            page.write_text("<!doctype html><title>elsewhere</title>")
            self.browser.open(page.as_uri())
            self.assertEqual(self.status_from_page(view.address + "state"), "refused")
            page.write_text(f"<!doctype html><script src='{view.address}view.js'></script>"
                            f"<iframe src='{view.address}'></iframe><img src='{view.address}frame?of=0:1&side=0'>")
            self.browser.open(page.as_uri())
            self.assertEqual(self.browser.run("return document.images[0].naturalWidth"), 0)

    def test_the_page_keeps_its_own_rules(self):
        """Not a fault of the policy, and not a script's."""
        self.browser.log()
        self.open("scene.json")
        self.browser.press("w")
        for entry in self.browser.log():
            self.fail(entry["message"])


if __name__ == "__main__":
    unittest.main()
