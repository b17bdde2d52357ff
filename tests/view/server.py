#!/usr/bin/env python3
"""The server of `qx view` without a browser: who is let in, what is told of frames, saves and faults, how it ends.

usage: server.py QX
"""
import json
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

from serving import PATIENCE, View, read_png, until, write_png

QX = str(Path(sys.argv.pop(1)).resolve())
SOON = 2  # seconds, of which one is the machine's


def colour(x, y):
    """No other pixel of a picture of 24 x 18 has it."""
    return 10 * x, 12 * y, 7


class InFolder(unittest.TestCase):
    def setUp(self):
        kept = tempfile.TemporaryDirectory()
        self.addCleanup(kept.cleanup)
        self.folder = Path(kept.name)
        write_png(self.folder / "a.png", 24, 18, colour)
        self.scene()

    def scene(self, name="scene.json", **changes):
        scene = {"size": [24, 18], "frames": [1, 5], "depth": 8, "background": "a.png", "layers": [], **changes}
        (self.folder / name).write_text(json.dumps(scene))

    def view(self, *arguments):
        return self.enterContext(View(QX, self.folder, *arguments))


class WhoIsLetIn(InFolder):
    def test_the_token_opens_all_and_nothing_opens_without_it(self):
        view = self.view("scene.json")
        for place in ["", "view.js", "page.css", "state?shown=0:1", "frame?of=0:1&side=0"]:
            self.assertEqual(view.get(place).status, 200, place)
        wrong = view.token[:-1] + ("0" if view.token[-1] != "0" else "1")
        for target in ["/", "/state", "/frame?of=0:1&side=0", f"/{wrong}/", f"/{wrong}/state", f"/{view.token}",
                       f"/{view.token[:-1]}/state", f"//{view.token}/", f"/?token={view.token}"]:
            answer = view.ask(target)
            self.assertEqual((answer.status, answer.body), (403, b""), target)

    def test_tokens_are_random(self):
        tokens = {self.view("a.png").token for _ in range(3)}
        self.assertEqual(len(tokens), 3)
        for token in tokens:
            self.assertGreaterEqual(4 * len(token), 128)

    def test_requests_in_the_name_of_another_site_are_refused(self):
        view = self.view("scene.json")
        here, port = f"127.0.0.1:{view.port}", view.port
        for host in ["example.com", f"example.com:{port}", "127.0.0.1", f"127.0.0.1:{port + 1}", f"[::1]:{port}",
                     f"127.0.0.1:{port}.example.com", f"0.0.0.0:{port}"]:
            self.assertEqual(view.get("state", host=host).status, 403, host)
        for lines, status in [
            ([f"Origin: http://{here}"], 200), ([f"Origin: http://localhost:{port}"], 200),
            (["Origin: http://example.com"], 403), (["Origin: null"], 403), ([f"Origin: https://{here}"], 403),
            ([f"Origin: http://{here}", "Origin: http://example.com"], 403),
            (["Sec-Fetch-Site: same-origin"], 200), (["Sec-Fetch-Site: none"], 200),
            (["Sec-Fetch-Site: cross-site"], 403), (["Sec-Fetch-Site: same-site"], 403),
            ([f"Host: {here}"], 403),  # a second one
        ]:
            answer = view.get("state", headers=lines)
            self.assertEqual(answer.status, status, lines)
            if status == 403:
                self.assertEqual(answer.body, b"")
        self.assertEqual(view.get("state", host=f"localhost:{port}").status, 200)
        self.assertNotEqual(view.get("state", host="").status, 200)

    def test_only_the_loopback_address_listens(self):
        view = self.view("scene.json")
        for line in Path("/proc/net/tcp").read_text().splitlines()[1:]:
            address, state = line.split()[1], line.split()[3]
            if state == "0A" and int(address.split(":")[1], 16) == view.port:
                self.assertEqual(address.split(":")[0], "0100007F")
                return
        self.fail("the port is in no list")

    def test_there_are_no_files(self):
        view = self.view("scene.json")
        (self.folder / "secret.txt").write_text("secret")
        for place in ["secret.txt", "a.png", "scene.json", "../a.png", "..%2fa.png", "%2e%2e/a.png", "./a.png",
                      "../../../../etc/passwd", "..%2f..%2f..%2f..%2fetc%2fpasswd", "//etc/passwd", "view.js/",
                      "view.js%00.png", "frame/../../a.png", "..", "%2e%2e%2f" * 9 + "etc/passwd", "page", "view.JS"]:
            answer = view.get(place)
            self.assertIn(answer.status, (400, 403, 404), place)
            for words in (b"secret", b"root:", b"PNG"):
                self.assertNotIn(words, answer.body)

    def test_only_get_is_answered(self):
        view = self.view("scene.json")
        for method in ["POST", "PUT", "DELETE", "PATCH", "OPTIONS", "HEAD"]:
            answer = view.get("state", method=method)
            self.assertEqual(answer.status, 405, method)
            self.assertEqual(answer.headers["allow"], "GET")
            self.assertEqual(view.ask("/state", method=method).status, 403, method)
        self.assertEqual(view.get("state", method="BREW").status, 400)

    def test_answers_are_for_the_page_alone(self):
        view = self.view("scene.json")
        answers = [view.get(place) for place in ("", "state", "frame?of=0:1&side=0", "nothing")]
        for answer in [*answers, view.ask("/")]:
            self.assertEqual(answer.headers["cache-control"], "no-store")
            self.assertEqual(answer.headers["x-content-type-options"], "nosniff")
            policy = answer.headers["content-security-policy"]
            self.assertTrue(policy.startswith("default-src 'none';"), policy)
            for word in ("unsafe", "http:", "*", "data:"):
                self.assertNotIn(word, policy)
            self.assertNotIn("access-control-allow-origin", answer.headers)

    def test_the_page_names_no_other_machine(self):
        """All that the page names, and what that names, is served beside it."""
        view = self.view("scene.json")
        names, seen = [""], set()
        while names:
            name = names.pop()
            if name in seen:
                continue
            seen.add(name)
            answer = view.get(name)
            self.assertEqual(answer.status, 200, name)
            text = answer.body.decode().replace("http://www.w3.org/2000/svg", "")  # the name of a language
            self.assertNotIn("://", text, name)
            names += re.findall(r'(?:src=|href=|from )"(?:\./)?([^"]*)"', text)
        self.assertGreater(len(seen), 5)


class WhatIsTold(InFolder):
    def test_frames_are_those_that_render_writes(self):
        self.scene("deep.json", depth=16, layers=[{"solid": [1, 0, 0, 0.3]}], background=[0.25, 0.5, 0.125, 0.7])
        for scene in ("scene.json", "deep.json"):
            subprocess.run([QX, "render", scene, "--frames", "3", "-q", "-o", "r.png", "--depth", "8"], check=True,
                           cwd=self.folder)
            answer = self.view(scene, "--depth", "8").get("frame?of=0:3&side=0")
            self.assertEqual(answer.headers["content-type"], "image/png")
            self.assertEqual(read_png(answer.body), read_png((self.folder / "r.png").read_bytes()))

    def test_a_frame_of_16_bits_comes_in_8(self):
        self.scene(depth=16)
        answer = self.view("scene.json").get("frame?of=0:1&side=0")
        width, height, bits, rows = read_png(answer.body)
        self.assertEqual((width, height, bits, answer.frame()["depth"]), (24, 18, 8, 16))
        self.assertEqual(rows[17][23][:3], colour(23, 17))

    def test_values_are_those_of_the_depth(self):
        """An 8-bit value v is v / 255 of full, which is 255, 32768 or 1."""
        for depth, full, step in ((8, 255, 0), (16, 32768, 0.5), (32, 1, 1e-7)):
            self.scene(depth=depth)
            view = self.view("scene.json")
            frame = view.get("frame?of=0:2&side=0").frame()
            for x, y in ((0, 0), (23, 17), (5, 11)):
                told = view.get(f"values?id={frame['id']}&x={x}&y={y}").json()
                self.assertEqual((told["x"], told["y"], told["depth"]), (x, y, depth))
                for value, byte in zip(told["argb"], (255, *colour(x, y)), strict=True):
                    self.assertAlmostEqual(value, byte * full / 255, delta=step)

    def test_floats_beyond_full_and_below_0_are_told(self):
        self.scene(depth=32, background=[0, 0, 0], layers=[
            {"solid": [1, 0.5, 0], "mode": "add"}, {"solid": [1, 0.5, 0], "mode": "add"}])
        view = self.view("scene.json")
        frame = view.get("frame?of=0:1&side=0").frame()
        self.assertEqual(view.get(f"values?id={frame['id']}&x=3&y=3").json()["argb"], [1, 2, 1, 0])

    def test_requests_that_make_no_sense_are_told_so(self):
        view = self.view("scene.json")
        frame = view.get("frame?of=0:1&side=0").frame()["id"]
        for place, status in [("frame", 400), ("frame?of=0:1", 400), ("frame?of=1:1&side=0", 400),
                              ("frame?of=0:x&side=0", 400), ("frame?of=0:1&side=2", 400), ("frame?of=-1:1&side=0", 400),
                              ("frame?of=0:99999999999&side=0", 400), ("state?shown=0", 400), ("state?shown=7:1", 400),
                              (f"values?id={frame}&x=24&y=0", 400), (f"values?id={frame}&x=0&y=-1", 400),
                              (f"values?id={frame}", 400), ("values?id=4711&x=0&y=0", 404), ("values?id=x", 400)]:
            answer = view.get(place)
            self.assertEqual(answer.status, status, place)
            self.assertTrue(answer.json()["fault"], place)

    def test_clips_and_pictures_have_their_own_frames(self):
        for number in (3, 4, 7):
            write_png(self.folder / f"q.{number:02}.png", 2, 2, lambda x, y, n=number: (n, x, y))
        view = self.view("q.##.png", "a.png")
        numbered, still = view.state()["sources"]
        self.assertEqual((numbered["kind"], numbered["frames"]), ("pictures", [[3, 4, 1], [7, 7, 1]]))
        self.assertEqual((still["kind"], len(still["frames"])), ("picture", 1))
        self.assertEqual(read_png(view.get("frame?of=0:7&side=0").body)[3][1][1], (7, 1, 1))
        self.assertEqual(read_png(view.get("frame?of=1:0&side=1").body)[3][2][1], colour(1, 2))


class Saves(InFolder):
    def stamp(self, view):
        return view.state()["stamps"]["0:1"]

    def test_a_saved_scene_is_another_one(self):
        view = self.view("scene.json")
        before = view.state()
        self.assertEqual(view.state(), before)
        self.scene(frames=[1, 9], size=[12, 18])
        after = view.state()
        self.assertNotEqual(after["stamps"], before["stamps"])
        self.assertEqual(after["sources"][0]["frames"], [[1, 9, 1]])
        self.assertEqual(view.get("frame?of=0:1&side=0").frame()["width"], 12)

    def test_files_that_the_scene_names_count(self):
        write_png(self.folder / "m.01.png", 24, 18, lambda x, y: (200, 200, 200))
        (self.folder / "sharp.txt").write_text("1")
        self.scene(layers=[{"file": "m.##.png", "out": 1}])
        view = self.view("scene.json")
        view.get("frame?of=0:1&side=0")
        stamps = [self.stamp(view)]
        for name in ("a.png", "m.01.png"):
            write_png(self.folder / name, 24, 18, lambda x, y: (1, 2, 99 + len(stamps)))
            stamps.append(self.stamp(view))
            got = read_png(view.get("frame?of=0:1&side=0").body)[3][0][0]
            self.assertEqual(got, (1, 2, 99 + len(stamps) - 1) if name == "m.01.png" else (200, 200, 200))
        (self.folder / "other.txt").write_text("not named")
        self.assertEqual(self.stamp(view), stamps[-1])
        self.assertEqual(len(set(stamps)), 3)

    def test_a_broken_scene_says_what_render_says(self):
        view = self.view("scene.json")
        for changes in ({"layers": [{"file": "a.png", "mod": 2}]}, {"layers": [{"file": "no.png"}]}, {"size": [0, 2]},
                        {"linearize": True}):
            self.scene(**changes)
            said = subprocess.run([QX, "render", "scene.json", "-o", "x.#.png"], cwd=self.folder, capture_output=True,
                                  text=True, check=False).stderr.splitlines()[0].removeprefix("qx: ")
            answer = view.get("frame?of=0:1&side=0")
            self.assertEqual((answer.status, answer.json()["fault"]), (422, said))
            self.assertEqual(answer.json()["stamp"], self.stamp(view))
        (self.folder / "scene.json").write_text("{ no json")
        self.assertIn("parse error at line 1", view.state()["sources"][0]["faults"][0])
        self.scene(layers=[{"solid": [2, 0, 0]}, {"solid": [0, 0, 0], "opacity": -1}])
        self.assertEqual(len(view.state()["sources"][0]["faults"]), 2)
        self.scene()
        self.assertEqual(view.state()["sources"][0]["faults"], [])
        self.assertEqual(view.get("frame?of=0:1&side=0").status, 200)

    def test_a_missing_file_that_comes_is_seen(self):
        self.scene(layers=[{"file": "late.png"}])
        view = self.view("scene.json")
        self.assertEqual(view.get("frame?of=0:1&side=0").status, 422)
        before = self.stamp(view)
        write_png(self.folder / "late.png", 24, 18, lambda x, y: (9, 8, 7))
        self.assertNotEqual(self.stamp(view), before)
        self.assertEqual(read_png(view.get("frame?of=0:1&side=0").body)[3][1][1], (9, 8, 7))


class Ends(InFolder):
    def slow(self):
        """A scene that takes minutes."""
        blur = {"effect": "blur", "kind": "disc", "radius": 200}
        self.scene(size=[6000, 6000], background=[0.5, 0.5, 0.5], depth=32,
                   layers=[{"solid": [1, 0, 0], "effects": [blur] * 20}])

    def test_an_interruption_ends_it(self):
        view = self.view("scene.json")
        view.get("frame?of=0:1&side=0")
        seconds, status, said = view.end()
        self.assertEqual((status, said), (130, "qx: interrupted\n"))
        self.assertLess(seconds, SOON)

    def test_an_interruption_ends_work_and_connections_that_say_nothing(self):
        self.slow()
        view = self.view("scene.json")
        answers = []
        asking = threading.Thread(target=lambda: answers.append(view.get("frame?of=0:1&side=0")))
        asking.start()
        with socket.create_connection(("127.0.0.1", view.port)) as quiet:
            quiet.sendall(b"GET / HT")
            until(lambda: float(Path(f"/proc/{view.process.pid}/stat").read_text().split()[13]) > 20, "it works")
            seconds, status, said = view.end(signal.SIGTERM)
        asking.join()
        self.assertEqual((status, said), (130, "qx: interrupted\n"))
        self.assertLess(seconds, SOON)
        self.assertEqual(answers[0].status, 503)

    def test_wrong_uses_are_told_in_a_line(self):
        taken = self.enterContext(socket.create_server(("127.0.0.1", 0)))
        port = str(taken.getsockname()[1])
        (self.folder / "empty.png").write_bytes(b"")
        before = sorted(self.folder.iterdir())
        for arguments, status, words in [
            ([], 2, "FILE"), (["no.json"], 1, "no.json: No such file"), (["."], 1, "is a folder"),
            (["empty.png"], 1, "is empty"), (["q.##.png"], 1, "no frame is there"),
            (["a.png", "a.png", "a.png"], 2, "at most two"), (["a.png", "--port", "0"], 2, "--port 0"),
            (["a.png", "--port", "70000"], 2, "--port 70000"), (["a.png", "--port", "x"], 2, "--port x"),
            (["a.png", "--port", port], 1, f"--port {port}: Address already in use"),
            (["a.png", "--depth", "9"], 2, "--depth 9"), (["a.png", "--depth", "16"], 2, "--depth is for scenes"),
            (["a.png", "--space", "srgb"], 2, "for scenes"), (["a.png", "--frames", "1"], 2, "--frames is for"),
            (["scene.json", "--frames", "z"], 2, "--frames z"), (["scene.json", "--space", "no"], 2, "--space no"),
            (["scene.json", "--memory", "2X"], 2, "--memory 2X"), (["scene.json", "-o", "x"], 2, "-o"),
        ]:
            ran = subprocess.run([QX, "view", "--no-open", *arguments], cwd=self.folder, capture_output=True, text=True,
                                 check=False, timeout=PATIENCE)
            self.assertEqual(ran.returncode, status, (arguments, ran.stderr))
            self.assertEqual(ran.stderr.count("\n"), 1, ran.stderr)
            self.assertIn(words, ran.stderr)
            self.assertEqual(ran.stdout, "")
        self.assertEqual(sorted(self.folder.iterdir()), before)

    def test_nothing_is_written(self):
        before = {path: path.stat().st_mtime_ns for path in self.folder.iterdir()}
        view = self.view("scene.json")
        view.get("frame?of=0:1&side=0")
        view.end()
        self.assertEqual({path: path.stat().st_mtime_ns for path in self.folder.iterdir()}, before)


if __name__ == "__main__":
    unittest.main()
