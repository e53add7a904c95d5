#!/usr/bin/env python3
"""Checks of kdrcore-cull: counts and picture of a small hand-built scene, the counting kernel,
the built-in scene, and the errors for bad box files and bad options.

Usage: cull_checks.py PATH/TO/kdrcore-cull
"""
import math
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

CULL = os.path.abspath(sys.argv[1])
SVG_NS = "{http://www.w3.org/2000/svg}"
passed = 0
failed = 0


def check(condition, what):
    global passed, failed
    if condition:
        passed += 1
    else:
        failed += 1
        print("FAILED:", what)


def run(cwd, *args):
    return subprocess.run([CULL, *args], cwd=cwd, capture_output=True, text=True, timeout=120)


def counts(stdout):
    return {m.group(1): int(m.group(2))
            for m in re.finditer(r"^\s+(visible|culled|behind|picked|straddle)\s+(\d+)", stdout, re.M)}


def box_rects(svg_path):
    root = ET.parse(svg_path).getroot()
    rects = [r for r in root.iter(SVG_NS + "rect") if "box" in r.get("class", "").split()]
    return root, rects


def check_top_view(root, printed, what):
    """The top view beside the screen: one footprint per box, legend counts as printed.
    Returns the footprints by their title's box number."""
    panels = [root.find(".//%sg[@id='%s']" % (SVG_NS, i)) for i in ("screen-panel", "top-panel")]
    titles = [t for t in root.iter(SVG_NS + "text") if t.get("class") == "panel-title"]
    check(None not in panels and len(titles) == 2, what + ": two panels, each with a title")
    if None in panels:
        return {}
    feet = [r for r in panels[1].iter(SVG_NS + "rect") if r.get("class", "").split()[:1] == ["footprint"]]
    n = sum(printed.get(k, 0) for k in ("visible", "culled", "behind"))
    check(len(feet) == n, what + ": one footprint per box, %d for %d" % (len(feet), n))
    legend = {t.get("data-class"): int(t.get("data-count")) for t in panels[1].iter(SVG_NS + "text")
              if t.get("class") == "count"}
    # The legend's colours are exclusive: its visible boxes are those not picked.
    check(legend.get("visible", -1) + legend.get("picked", 0) == printed.get("visible")
          and all(legend.get(k) == printed.get(k) for k in ("culled", "behind", "picked", "straddle")),
          what + ": legend counts %s, printed %s" % (legend, printed))
    return {r.find(SVG_NS + "title").text.split(":")[0]: r for r in feet}


# The demo camera stands at (0, 2, 0) and looks along -z with a 60 degree vertical field of view
# onto 800 x 600 pixels. A point (x, y, -d) in front then lands on the pixel
# (400 + K x / d, 300 + K (y - 2) / d) with K = 300 / tan(30 degrees) = 519.6 (and the same K
# horizontally, as 400 / (tan(30 degrees) * 4/3)). The pick rectangle is (320, 240) - (480, 360).
K = 300.0 / math.tan(math.radians(30.0))

SCENE = (
    "# hand-built scene: expected verdicts worked out with the pixel formula above\r\n"
    "\n"
    # 1: x from 373 to 564 px, y from 273 to 327 px: wholly on the screen. Corners 1 to 4
    #    (x = -0.5) lie in the pick rectangle, corner 5 (x = 3) does not: picked.
    "-0.5 1.5 -10.5   3 2.5 -9.5\n"
    # 2: x beyond 2000 px: culled.
    "40 1 -11 42 3 -9   # far to the right\n"
    # 3: behind the viewer.
    "-1\t1\t9\t1\t3\t11\n"
    # 4: encloses the eye; its corners in front and, negated back, behind span -120 to 920 px
    #    and cover the whole screen: straddles, visible, picked.
    "-1 1 -1 1 3 1\n"
    # 5: x from 88 to 164 px, y from 248 to 352 px: visible, wholly inside, not picked.
    "-6 1 -11 -5 3 -10\n"
    # 6: 28 above the eye at distance 9 to 11: far above the screen, culled.
    "-1 30 -11 1 32 -9\n"
    # 7: behind the viewer.
    "-2e1 0 50 20 4 6e1\n"
    # 8: beside the eye, from 3 behind to 3 in front; all corners, the ones behind negated back,
    #    lie right of 1093 px: straddles, culled.
    "4 1 -3 6 3 3\n"
)
EXPECTED = {"visible": 3, "culled": 3, "behind": 2, "picked": 2, "straddle": 2}


def check_small_scene(tmp):
    scene = os.path.join(tmp, "scene.txt")
    with open(scene, "w", newline="") as f:
        f.write(SCENE)
    svg = os.path.join(tmp, "scene.svg")
    r = run(tmp, "--boxes", scene, "--svg", svg)
    check(r.returncode == 0, "small scene: status 0, got %d: %s" % (r.returncode, r.stderr))
    check(counts(r.stdout) == EXPECTED, "small scene counts %s, expected %s" % (counts(r.stdout), EXPECTED))
    check(re.search(r"\(2 of them wholly inside\)", r.stdout) is not None,
          "boxes 1 and 5 lie wholly inside the viewport:\n" + r.stdout)
    check(os.path.isfile(svg), "small scene: picture written")
    if not os.path.isfile(svg):
        return

    root, rects = box_rects(svg)
    # One shape per box with a screen extent: the two boxes behind have none.
    check(len(rects) == 6, "small scene: 6 box shapes, got %d" % len(rects))
    by_class = {}
    for rect in rects:
        verdict = rect.get("class").split()[1]
        by_class[verdict] = by_class.get(verdict, 0) + 1
    check(by_class == {"picked": 2, "visible": 1, "culled": 3}, "shape classes %s" % by_class)
    dashed = sum(1 for rect in rects if rect.get("stroke-dasharray"))
    check(dashed == 2, "the two straddling boxes are dashed, got %d" % dashed)

    # Extents far off the screen (box 4's reach past every edge) are clipped into the picture.
    total_w, total_h = float(root.get("width")), float(root.get("height"))
    for rect in rects:
        x, y, w, h = (float(rect.get(k)) for k in ("x", "y", "width", "height"))
        check(all(math.isfinite(v) for v in (x, y, w, h)) and 0 <= x and x + w <= total_w
              and 0 <= y and y + h <= total_h and w >= 0 and h >= 0,
              "shape inside the picture: %s" % rect.attrib)

    viewport = root.find(".//%srect[@id='viewport']" % SVG_NS)
    pick = root.find(".//%srect[@id='pick']" % SVG_NS)
    check(viewport is not None and pick is not None, "viewport and pick rectangle drawn")
    if viewport is None or pick is None:
        return
    vx, vy = float(viewport.get("x")), float(viewport.get("y"))
    check(float(viewport.get("width")) == 800 and float(viewport.get("height")) == 600,
          "viewport is 800 x 600")
    # Pick rectangle (320, 240) - (480, 360) with y up: its top edge is 600 - 360 below the top.
    check(abs(float(pick.get("x")) - vx - 320) < 0.01 and abs(float(pick.get("y")) - vy - 240) < 0.01,
          "pick rectangle placed at (320, 240) - (480, 360)")

    # Box 5's extent, from the pixel formula: x from 400 - 6K/10 to 400 - 5K/11, y from
    # 300 - K/10 to 300 + K/10 (y up; the picture runs y down from the viewport's top).
    titles = {rect.find(SVG_NS + "title").text.split(":")[0]: rect for rect in rects}
    box5 = titles.get("box 5")
    check(box5 is not None, "box 5 has a shape with its title")
    if box5 is not None:
        want = (400 - 6 * K / 10, 600 - (300 + K / 10), 6 * K / 10 - 5 * K / 11, 2 * K / 10)
        got = (float(box5.get("x")) - vx, float(box5.get("y")) - vy, float(box5.get("width")),
               float(box5.get("height")))
        check(all(abs(g - w) < 0.15 for g, w in zip(got, want)),
              "box 5 extent %s, expected %s" % (got, want))
    check("box 3" not in titles and "box 7" not in titles, "boxes behind have no shape")

    # Seen from above: box 1 stands in front of the viewer plane (up the page), box 3 behind it;
    # box 7 is 40 wide (x) and 10 deep (z). Boxes 4 and 8 reach from z < 0 to z > 0: they straddle.
    feet = check_top_view(root, counts(r.stdout), "small scene")
    plane = root.find(".//%sg[@id='footprint']/%sg/%sline[@class='viewer-plane']" % (SVG_NS, SVG_NS, SVG_NS))
    check(plane is not None, "small scene: the viewer plane is drawn in the top view")
    if len(feet) == 8 and plane is not None:
        plane_y = float(plane.get("y1"))
        check(float(feet["box 1"].get("y")) + float(feet["box 1"].get("height")) < plane_y
              < float(feet["box 3"].get("y")), "box 1 in front of the viewer plane, box 3 behind")
        check(abs(float(feet["box 7"].get("width")) - 4 * float(feet["box 7"].get("height"))) < 0.5,
              "box 7's footprint is 40 by 10: %s" % feet["box 7"].attrib)
        check(sorted(k for k, f in feet.items() if "straddle" in f.get("class").split()) == ["box 4", "box 8"],
              "boxes 4 and 8 straddle the viewer plane")

    # The counting kernel changes no result, and shows the road of one call: box 1 is on the
    # screen. All 8 corners are projected for the viewport test (wide branch, all inside); the
    # pick test ends at corner 5, the first that differs from corner 1.
    r = run(tmp, "--boxes", scene, "--svg", svg, "--kernel", "counting")
    check(r.returncode == 0, "counting kernel: status 0")
    check(counts(r.stdout) == EXPECTED, "counting kernel: same counts")
    check("calls made for box 1 " in r.stdout, "counting kernel reports box 1:\n" + r.stdout)
    check(re.search(r"viewport test\s+multMatrixVec3f x8 -> touches the viewport, wholly inside", r.stdout),
          "viewport test: 8 projections:\n" + r.stdout)
    check(re.search(r"pick test\s+multMatrixVec3f x5 -> touches the pick rectangle", r.stdout),
          "pick test: 5 projections, then done:\n" + r.stdout)
    check(re.search(r"screen extent\s+multMatrixVec3f x8 -> code 1", r.stdout),
          "screen extent: 8 projections, all in front:\n" + r.stdout)
    setup = re.search(r"build the camera matrix: (.*)", r.stdout)
    check(setup is not None and "cross x2" in setup.group(1) and "multMatrices x1" in setup.group(1),
          "camera: two cross products and one matrix product (perspective * view) through the kernel")


def check_built_in(tmp):
    r = run(tmp, "--count", "64")
    check(r.returncode == 0, "built-in scene: status 0: " + r.stderr)
    c = counts(r.stdout)
    check(c.get("visible", 0) + c.get("culled", 0) + c.get("behind", 0) == 64,
          "built-in: every box is visible, culled or behind: %s" % c)
    check(all(c.get(k, 0) > 0 for k in ("visible", "culled", "behind", "picked")),
          "built-in: boxes of every kind: %s" % c)
    check(c.get("straddle", 0) >= 4, "built-in: every 16th box straddles the viewer: %s" % c)
    svg = os.path.join(tmp, "cull.svg")
    check(os.path.isfile(svg), "built-in: default picture cull.svg in the working directory")
    if os.path.isfile(svg):
        root, rects = box_rects(svg)
        check(len(rects) == 64 - c.get("behind", 0), "built-in: one shape per box on or off screen")
        check_top_view(root, c, "built-in")


def check_errors(tmp):
    def expect(status, pattern, args, what):
        svg = os.path.join(tmp, "never.svg")
        r = run(tmp, *args, "--svg", svg) if "--svg" not in args else run(tmp, *args)
        lines = r.stderr.strip().splitlines()
        check(r.returncode == status, "%s: status %d, got %d" % (what, status, r.returncode))
        check(len(lines) == 1 and lines[0].startswith("kdrcore-cull: ") and re.search(pattern, lines[0]),
              "%s: one-line error matching %r, got %r" % (what, pattern, r.stderr))
        check(not os.path.exists(svg), what + ": no picture written")

    files = {
        "short.txt": ("# one box\n0 0 -5 1 1 -4\n0 0 -5 1 1\n", r"short\.txt:3: expected 6 numbers.*found 5"),
        "long.txt": ("0 0 -5 1 1 -4 7\n", r"long\.txt:1: expected 6 numbers.*found 7"),
        "word.txt": ("\n0 0 -5 1 1 abc\n", r"word\.txt:2: 'abc' is not a number"),
        "glued.txt": ("0 0 -5 1 1 -4x\n", r"glued\.txt:1: '-4x' is not a number"),
        "inf.txt": ("0 0 -5 1 1 inf\n", r"inf\.txt:1: 'inf' is not a finite number"),
        "nan.txt": ("nan 0 -5 1 1 -4\n", r"nan\.txt:1: 'nan' is not a finite number"),
        "huge.txt": ("0 0 -5 1 1 1e39\n", r"huge\.txt:1: '1e39' is not a finite number in the range of a float"),
        "order.txt": ("0 0 -5 1 1 -4\n0 3 -5 1 1 -4\n", r"order\.txt:2: min y 3 is greater than max y 1"),
        "empty.txt": ("# nothing here\n\n", r"empty\.txt: no boxes"),
    }
    for name, (text, pattern) in files.items():
        path = os.path.join(tmp, name)
        with open(path, "w") as f:
            f.write(text)
        expect(2, pattern, ["--boxes", path], name)
    expect(2, r"missing\.txt: cannot read", ["--boxes", os.path.join(tmp, "missing.txt")], "missing file")

    expect(2, r"unknown option '--frobnicate'", ["--frobnicate"], "unknown option")
    expect(2, r"unexpected argument 'scene\.txt'", ["scene.txt"], "stray argument")
    expect(2, r"--count needs a value", ["--svg", os.path.join(tmp, "never.svg"), "--count"], "--count without value")
    for bad in ("0", "-3", "12x", "", "1000001"):
        expect(2, r"--count: '.*' is not a whole number", ["--count", bad], "--count " + repr(bad))
    expect(2, r"--kernel: unknown kernel 'fancy'", ["--kernel", "fancy"], "unknown kernel")
    expect(2, r"--count .* cannot go with --boxes",
           ["--count", "5", "--boxes", os.path.join(tmp, "short.txt")], "--count with --boxes")

    r = run(tmp, "--count", "3", "--svg", os.path.join(tmp, "no-such-dir", "x.svg"))
    check(r.returncode == 1, "unwritable picture: status 1, got %d" % r.returncode)
    check(re.match(r"kdrcore-cull: cannot write .*no-such-dir/x\.svg", r.stderr) is not None,
          "unwritable picture: error names the path, got %r" % r.stderr)

    r = run(tmp, "--help")
    check(r.returncode == 0 and r.stdout.startswith("Usage: kdrcore-cull"), "--help: usage, status 0")
    check(all(opt in r.stdout for opt in ("--boxes FILE", "--count N", "--svg PATH", "--kernel NAME")),
          "--help names every option")


with tempfile.TemporaryDirectory() as tmp:
    check_small_scene(tmp)
    check_built_in(tmp)
    check_errors(tmp)

print("kdrcore-cull checks: %d passed, %d failed" % (passed, failed))
sys.exit(1 if failed else 0)
