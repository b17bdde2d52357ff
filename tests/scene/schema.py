#!/usr/bin/env python3
"""Holds docs/scene.schema.json to the examples and to what the command makes of scenes, right ones and wrong ones.

usage: schema.py SOURCES QX
"""
import json
import subprocess
import sys
import tempfile
from pathlib import Path

import jsonschema

KEYS = '{"keys": [{"frame": 0, "value": %s}, {"frame": 9.5, "value": %s, "interpolation": "hold"}]}'

# Layers, with ' for ".
RIGHT = [
    "{'file': 'a.png'}",
    "{'file': {'name': 'a.png', 'offset': 3}, 'matte': [0, 0, 1], 'missing': 'skip'}",
    "{'file': {'clip': 'a.#.png', 'speed': '1/3', 'rate': [30000, 1001], 'cuts': [1]}}",
    "{'solid': [1, 0, 0], 'size': [3, 4], 'in': -4, 'out': 9, 'at': [-3, 2], 'visible': false}",
    "{'solid': " + KEYS % ("[1, 0, 0]", "[0, 0, 0, 0]") + "}",
    "{'gradient': {'kind': 'radial', 'from': [0, 0], 'to': [1.5, 2], 'stops': [{'at': 0, 'colour': [0, 0, 0]}]}}",
    "{'text': 'a', 'size': 12.5, 'align': 'center', 'colour': [0, 0, 0, 0.5], 'width': 80, 'line-height': 1.5}",
    "{'layers': [{'layers': []}, {'file': 'a.png'}], 'mode': 5, 'opacity': 0.5, 'rgb-only': true}",
    "{'file': 'a.png', 'mask': 'a.png', 'seed': -7, 'field': 'odd', 'quality': 'draft', 'linear': 2.2}",
    "{'file': 'a.png', 'mask': {'file': 'a.png', 'kind': 'luma', 'at': [-3, 4]}}",
    "{'file': 'a.png', 'mask': {'file': 'a.png', 'at': " + KEYS % ("[0.5, 1]", "[3, 4]") + "}}",
    "{'file': 'a.png', 'mask': {'file': 'a.png', 'transform': {'scale': [1, 2]}}}",
    "{'file': 'a.png', 'name': 'a'}, {'file': 'a.png', 'matte-layer': {'layer': 'a', 'kind': 'luma'}, 'parent': 'a'}",
    "{'file': 'a.png', 'transform': {'anchor': [1, 2], 'scale': 2, 'rotate': " + KEYS % ("3", "[4]") + "}}",
    "{'file': 'a.png', 'transform': {'matrix': [1, 0, 0, 0, 1, 0, 0, 0, 1]}, 'shutter': {'angle': 180, 'matrices': 2}}",
    "{'file': 'a.png', 'opacity': {'keys': [{'frame': 1, 'value': 1}], 'interpolation': {'bezier': [0, -1, 1, 2]}}}",
    "{'file': 'a.png', 'effects': [{'effect': 'blur', 'radius': [3, 4], 'grow': true, 'comment': 'soft'}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'matte', 'masks': [{'file': 'a.png', 'passes': 3, 'op': 'max'}]}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'adjust', 'hue': " + KEYS % ("3", "40") + "}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'blend', 'with': 'a.png'}, {'effect': 'convolve', 'filter': 'edges'}]}",
    "{'file': 'a.png', 'effects': [{'plugin': 'tint', 'parameters': {'amount': 0.5}}]}",
]
WRONG = [
    "{}",
    "7",
    "{'file': 7}",
    "{'file': ''}",
    "{'file': 'a.png', 'solid': [0, 0, 0]}",
    "{'file': 'a.png', 'opacty': 1}",
    "{'file': 'a.png', 'opacity': 2}",
    "{'file': 'a.png', 'opacity': {'keys': []}}",
    "{'file': 'a.png', 'opacity': {'keys': [{'frame': 0}]}}",
    "{'file': 'a.png', 'opacity': {'keys': [{'frame': 0, 'value': 1}], 'interpolation': 'cubic'}}",
    "{'file': 'a.png', 'opacity': {'keys': [{'frame': 0, 'value': 1}], 'interpolation': {'bezier': [0, 1, 2, 1]}}}",
    "{'file': 'a.png', 'in': 0.5}",
    "{'file': 'a.png', 'at': [0.5, 1]}",
    "{'file': 'a.png', 'visible': 1}",
    "{'file': 'a.png', 'missing': 'ignore'}",
    "{'solid': [0, 0, 0], 'missing': 'skip'}",
    "{'solid': [0, 0]}",
    "{'solid': [0, 0, 0], 'size': [0, 3]}",
    "{'gradient': {'from': [0, 0], 'to': [1, 1], 'stops': []}}",
    "{'gradient': {'from': [0, 0], 'stops': [{'at': 0, 'colour': [0, 0, 0]}]}}",
    "{'gradient': {'from': [0, 0], 'to': [1, 1], 'stops': [{'at': 2, 'colour': [0, 0, 0]}]}}",
    "{'text': 'a'}",
    "{'text': 'a', 'size': 12, 'align': 'middle'}",
    "{'layers': {}}",
    "{'layers': [{'file': 'a.png', 'mod': 2}]}",
    "{'file': 'a.png', 'mask': {'kind': 'luma'}}",
    "{'file': 'a.png', 'mask': {'file': 'a.png', 'at': [0.5, 1]}}",
    "{'file': 'a.png', 'mask': {'file': 'a.png', 'at': [0, 1], 'transform': {}}}",
    "{'file': 'a.png', 'matte-layer': 'a'}",
    "{'file': 'a.png', 'matte-layer': {'kind': 'luma'}}",
    "{'file': 'a.png', 'parent': 3}",
    "{'file': 'a.png', 'transform': {'matrix': [1, 0, 0]}}",
    "{'file': 'a.png', 'transform': {'matrix': [1, 0, 0, 0, 1, 0, 0, 0, 1], 'scale': 2}}",
    "{'file': 'a.png', 'shutter': {'matrices': 1}}",
    "{'file': 'a.png', 'effects': [{'effect': 'blurr'}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'blur', 'radios': 3}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'matte', 'masks': []}]}",
    "{'file': 'a.png', 'effects': [{'effect': 'blend'}]}",
    "{'file': 'a.png', 'effects': [{'plugin': 'tint', 'amount': 0.5}]}",
    "{'file': {'clip': 'a.#.png', 'speed': 2, 'map': " + KEYS % ("1", "2") + "}}",
    "{'file': {'clip': 'a.#.png', 'cuts': 'all'}}",
]
# Keys of the scene besides its layers.
RIGHT_SCENES = ["'size': [8, 8]", "'background': 'a.png'", "'size': [8, 8], 'frames': '1,3,5-9x2,-5--1', 'rate': [24, 1]",
                "'size': [8, 8], 'depth': 16, 'dither': true, '$schema': 'scene.schema.json', 'comment': 'a'",
                "'size': [8, 8], 'background': [0, 0.5, 1], 'space': 'srgb', 'linearize': true, 'output-space': 'srgb'"]
WRONG_SCENES = ["'depth': 8", "'size': [8]", "'size': [8, 8], 'depth': 12", "'background': [0, 0, 0]",
                "'size': [8, 8], 'frames': '3-'", "'size': [8, 8], 'frames': [1, 2, 3]", "'size': [8, 8], 'rate': 0",
                "'size': [8, 8], 'layer': []", "'size': [8, 8], 'background': [0, 2, 0]"]


def main() -> int:
    sources, qx = Path(sys.argv[1]), sys.argv[2]
    schema = json.loads((sources / "docs/scene.schema.json").read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    faults = []
    for example in sorted(sources.glob("examples/*/scene.json")):
        if not validator.is_valid(json.loads(example.read_text())):
            faults.append(f"{example}: refused by the schema")

    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for picture in ("a.png", "a.1.png", "a.2.png"):
            (folder / picture).write_bytes((sources / "examples/moving-layer/glow.png").read_bytes())
        frame = "'size': [8, 8], 'frames': [1, 2]"
        rows = [(f"{{{frame}, 'layers': [{layer}]}}", right) for layers, right in ((RIGHT, True), (WRONG, False))
                for layer in layers]
        rows += [(f"{{{keys}, 'layers': []}}", right) for scenes, right in ((RIGHT_SCENES, True), (WRONG_SCENES, False))
                 for keys in scenes]
        for text, right in rows:
            text = text.replace("'", '"')
            (folder / "s.json").write_text(text)
            frames = [] if '"frames"' in text else ["--frames", "1"]
            run = subprocess.run([qx, "render", "s.json", "--check", *frames], cwd=folder, capture_output=True, text=True)
            if validator.is_valid(json.loads(text)) != right:
                faults.append(f"the schema {'refuses' if right else 'takes'} {text}")
            if run.returncode != (0 if right else 1):
                faults.append(f"the command {'refuses' if right else 'takes'} {text}: {run.stderr}")
    print("\n".join(faults) or f"{len(rows)} scenes are told alike.")
    return 1 if faults else 0


sys.exit(main())
