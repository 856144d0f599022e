#!/usr/bin/env python3
# SPDX-License-Identifier: AGPL-3.0-or-later
"""Makes the gallery of the factory presets: a page with pictures and sounds beside it. scripts/gallery builds what it needs."""
import argparse
import concurrent.futures
import html
import json
import math
import os
import pathlib
import shutil
import string
import struct
import subprocess
import sys
import tempfile

from presets import KINDS, all_presets

HERE = pathlib.Path(__file__).resolve().parent
SECONDS = 16
MINUTES = 4  # how far the second plot looks, where the first one shows little
MORE_TRAVEL = 2.0  # a preset that travels so many times further in minutes gets the second plot

# The plug-in comes to rest in the last bar of the loop, which is played before it. Beat 32 is a bar line of every pattern.
LEAD_IN = "2"  # seconds
SONG = ["--tempo", "120", "--start-beat", "28"]

# How high a spectrogram reaches, its rows, and what the page calls its top. The second is for presets that cut lows only.
WHOLE, LOWS = (12000, 257, "12 kHz"), (200, 65, "200 Hz")

# Key in the lines of preset-figures, heading.
FIGURES = (
    ("louder", "Loudness, LU"), ("peak", "Peak, dBFS"), ("change", "Change, dB"), ("motion", "Motion, dB"),
    ("highpassOctaves", "Highpass, oct"), ("lowpassOctaves", "Lowpass, oct"),
)


def run(*words, **options):
    """Runs a program quietly; what it writes is shown only if it fails."""
    done = subprocess.run([str(word) for word in words], capture_output=True, text=True, **options)
    if done.returncode != 0:
        sys.exit(f"gallery: {words[0]} failed: {(done.stderr or done.stdout).strip().splitlines()[-1]}")
    return done.stdout


def fill(template, **texts):
    return string.Template((HERE / "page" / template).read_text()).substitute(texts)


class Gallery:
    def __init__(self, build, out, work):
        self.build, self.out, self.work = build, out, work
        self.host = build / "tools/host/kestrin-host"
        self.plugin = next(build.glob("source/*_artefacts/*/VST3/*.vst3"))
        self.stems = {}
        for folder in ("picture", "sound"):
            shutil.rmtree(out / folder, ignore_errors=True)
            (out / folder).mkdir(parents=True)

    # ---- sounds and pictures ----------------------------------------------------------------------------------------

    def make_stem(self, stem):
        """The sound before, for all presets that are played over it."""
        wav, end = self.work / f"{stem}.wav", self.work / f"{stem}-end.wav"
        run(self.build / "tools/demo/demo-loop", wav, stem)
        run("sox", "-V1", wav, end, "trim", f"-{LEAD_IN}")
        run("sox", "-V1", end, wav, self.work / f"{stem}-in.wav")
        self.copy_sound(wav, f"before-{stem}")

    def copy_sound(self, wav, name):
        """For listening: without loss, at 16 bits, which every browser plays."""
        run("sox", "-V1", "-D", wav, "-b", "16", self.out / f"sound/{name}.flac", "dither", "-s")

    def draw_spectrogram(self, wav, name, reach):
        top, rows, _ = reach
        run("sox", "-V1", wav, "-n", "remix", "-", "rate", 2 * top, "spectrogram", "-r", "-x", "600", "-y", rows, "-z", "80",
            "-o", self.out / f"picture/{name}.png")

    def render(self, preset, state):
        long, wav = self.work / f"{preset.slug}-long.wav", self.work / f"{preset.slug}.wav"
        run(self.host, "render", "--plugin", self.plugin, "--in", self.work / f"{preset.stem}-in.wav", "--out", long,
            "--state", state, *SONG)
        run("sox", "-V1", long, wav, "trim", LEAD_IN)
        self.copy_sound(wav, preset.slug)
        self.draw_spectrogram(wav, preset.slug, reach_of(preset))
        self.draw_spectrogram(self.work / f"{preset.stem}.wav", f"{preset.slug}-before", reach_of(preset))

    def draw_window(self, preset, state):
        """Beat 37.3: some steps are on and some are off."""
        picture = self.out / f"picture/{preset.slug}-window.png"
        run(self.host, "window", "--plugin", self.plugin, "--state", state, "--beat", "37.3", "--out", picture)
        return struct.unpack(">II", picture.read_bytes()[16:24])

    # ---- cutoffs over time ------------------------------------------------------------------------------------------

    def cutoffs(self, preset, state, seconds):
        """Rows of seconds, highpass and lowpass in Hz. A filter that is bypassed lets everything pass."""
        table = run(self.build / "tools/gallery/preset-figures", "cutoffs", state, seconds)
        rows = [[float(number) for number in line.split()] for line in table.splitlines()]
        for column, mode, everything in ((1, "hp_mode", 20.0), (2, "lp_mode", 20000.0)):
            if preset.settings.get(mode) == "bypass":
                for row in rows:
                    row[column] = everything
        return rows

    def draw_curve(self, preset, rows, seconds, title, cursor):
        data, name = self.work / f"{preset.slug}-{seconds}", f"{preset.slug}-{seconds}s.svg"
        step = max(1, len(rows) // 1400)
        data.write_text("".join(f"{time} {highpass} {lowpass}\n" for time, highpass, lowpass in rows[::step]))
        run("gnuplot", "-e", f"data='{data}'; picture='{self.out / 'picture' / name}'; seconds={seconds}", HERE / "cutoffs.gnuplot")
        ends = "; ".join(f"{filter_name} from {min(column):.0f} to {max(column):.0f} Hz" for filter_name, column in
                         (("highpass", [row[1] for row in rows]), ("lowpass", [row[2] for row in rows])))
        return fill("curve.html", title=title, file=name, alt=f"The cutoffs over {seconds} seconds: {ends}",
                    cursor='<i class="cursor"></i>' if cursor else "")

    def curves(self, preset, state):
        if not preset.moves:
            return ""
        rows = self.cutoffs(preset, state, MINUTES * 60)
        beginning = [row for row in rows if row[0] <= SECONDS]
        walks = "Brownian" in preset.settings.values()
        title = "The cutoffs; no two walks are alike" if walks else "The cutoffs"
        text = self.draw_curve(preset, beginning, SECONDS, title, True)
        if travel(rows) > MORE_TRAVEL * travel(beginning):
            text += self.draw_curve(preset, rows, MINUTES * 60, f"The cutoffs in {MINUTES} minutes", False)
        return text

    # ---- words ------------------------------------------------------------------------------------------------------

    def settings_rows(self, state):
        parameters = json.loads(run(self.host, "parameters", "--plugin", self.plugin, "--state", state, "--json"))
        rows = []
        for p in parameters:
            if abs(p["current"] - p["default"]) <= 0.0001:
                continue
            # Some texts are rounded so far that they tell no difference.
            text = p["currentText"] if p["currentText"] != p["defaultText"] else f'position {p["current"]:.4f}'
            rows.append(f'<tr><th scope="row">{html.escape(p["name"])}</th><td>{html.escape(text)}</td>'
                        f'<td>{html.escape(p["defaultText"])}</td></tr>')
        return "\n".join(rows)

    def make_preset(self, preset):
        """The preset's part of the page, and its figures by stem."""
        state = self.work / f"{preset.slug}.state"
        run(self.host, "state", "--plugin", self.plugin, "--state", self.build / f"presets/{preset.name}.vstpreset",
            "--write", state)
        lines = run(self.build / "tools/gallery/preset-figures", "sound", state, preset.stem).splitlines()
        figures = [json.loads(line) for line in lines]
        self.render(preset, state)
        width, height = self.draw_window(preset, state)
        say = {key: html.escape(getattr(preset, key)) for key in ("slug", "name", "about", "play", "listen", "stem")}
        text = fill("preset.html", **say, about_alt=html.escape(preset.about.rstrip(".")), stem_about=self.stem_about(preset.stem), top=reach_of(preset)[2],
                    curves=self.curves(preset, state), settings=self.settings_rows(state), window_width=width, window_height=height,
                    figure_heads=figure_heads(), figures="\n".join(figure_row(row["stem"], row) for row in figures))
        print(f"gallery: {preset.name}", flush=True)
        return text, figures[0]

    def stem_about(self, stem):
        return html.escape(self.stems[stem][:1].upper() + self.stems[stem][1:])

    def make(self, presets):
        usage = subprocess.run([self.build / "tools/demo/demo-loop"], capture_output=True, text=True, check=False).stderr
        self.stems = dict(line.strip().split(": ", 1) for line in usage.splitlines() if line.startswith("  "))
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            list(pool.map(self.make_stem, {preset.stem for preset in presets}))
            parts = list(pool.map(self.make_preset, presets))
        for file in ("gallery.css", "gallery.js"):
            shutil.copy(HERE / "page" / file, self.out)
        rows = "\n".join(figure_row(f'<a href="#{p.slug}">{html.escape(p.name)}</a>', figures, f"<td>{p.stem}</td>")
                         for p, (_, figures) in zip(presets, parts))
        page = fill("page.html", index=grouped(presets, index_of), figure_heads=figure_heads(), figures=rows,
                    presets=grouped(presets, lambda group: "\n".join(parts[presets.index(p)][0] for p in group)))
        (self.out / "index.html").write_text(page)


def reach_of(preset):
    off = [mode for mode in ("hp_mode", "lp_mode") if preset.settings.get(mode) == "bypass"]
    return LOWS if off == ["lp_mode"] and not preset.moves else WHOLE


def travel(rows):
    """How far both cutoffs travel together, in octaves."""
    return sum(math.log2(max(row[i] for row in rows) / min(row[i] for row in rows)) for i in (1, 2))


def figure_heads():
    return "".join(f'<th scope="col" class="number">{heading}</th>' for _, heading in FIGURES)


def figure_row(heading, figures, between=""):
    # Adding 0.0 takes the sign from a zero.
    cells = "".join(f'<td class="number">{round(figures[key], 1) + 0.0:.1f}</td>' for key, _ in FIGURES)
    return f'<tr><th scope="row">{heading}</th>{between}{cells}</tr>'


def index_of(group):
    return "<ul>" + "".join(f'<li><a href="#{p.slug}">{html.escape(p.name)}</a></li>' for p in group) + "</ul>"


def grouped(presets, text_of):
    """A heading for each kind of preset, and what is said of its presets."""
    groups = [(kind, [p for p in presets if p.kind == kind]) for kind, _ in reversed(KINDS)]
    return "\n".join(f"<h2>{kind}</h2>\n{text_of(group)}" for kind, group in groups if group)


def chosen(names):
    presets = all_presets()
    unknown = [name for name in names if name not in [p.name for p in presets]]
    if unknown:
        sys.exit(f"gallery: there is no preset \"{unknown[0]}\"; these are: " + ", ".join(p.name for p in presets))
    return [p for p in presets if not names or p.name in names]


def main():
    parser = argparse.ArgumentParser(prog="scripts/gallery", description="Makes a page on which the factory presets can be heard.")
    parser.add_argument("--only", metavar="NAME", action="append", default=[], help="this preset; may be given several times")
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help=argparse.SUPPRESS)
    parser.add_argument("--out", type=pathlib.Path, default="build/gallery", help="the folder to make (build/gallery)")
    options = parser.parse_args()
    presets = chosen(options.only)
    with tempfile.TemporaryDirectory() as work:
        Gallery(options.build, options.out, pathlib.Path(work)).make(presets)
    print(f"gallery: done: open {options.out.resolve()}/index.html")


if __name__ == "__main__":
    main()
