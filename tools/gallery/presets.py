#!/usr/bin/env python3
# SPDX-License-Identifier: AGPL-3.0-or-later
"""The written presets, in the order in which the manual and the gallery show them. As a program it prints the manual's table."""
import pathlib
import re

WRITTEN = pathlib.Path(__file__).resolve().parents[2] / "presets"

# A kind of preset, and what a setting of it looks like; the first that fits.
KINDS = (
    ("Moved by the Frequencer", re.compile(r"seq\d+_")),
    ("Moved by the LFOs", re.compile(r"lfo\dT_")),
    ("At rest", re.compile("")),
)


class Preset:
    """One text: what it says for people, and its settings by the ids of the parameters."""

    def __init__(self, file):
        rows = [line.split("=", 1) for line in file.read_text().splitlines() if "=" in line and not line.startswith("#")]
        self.settings = {key.strip(): value.strip() for key, value in rows}
        self.slug = file.stem
        self.name, self.about, self.play, self.listen, self.stem = (
            self.settings.pop(key) for key in ("name", "about", "play", "listen", "stem"))
        self.family = self.settings.get("filtmode", "Butterworth")
        self.kind = next(kind for kind, setting in KINDS if any(setting.match(key) for key in self.settings))
        self.moves = self.kind != "At rest"


def all_presets():
    """The ones at rest first, then those of the LFOs and of the Frequencer; by name."""
    kinds = [kind for kind, _ in reversed(KINDS)]
    return sorted(map(Preset, WRITTEN.glob("*.txt")), key=lambda preset: (kinds.index(preset.kind), preset.name))


def print_table():
    print("| preset | family | play through it | listen for |")
    print("|---|---|---|---|")
    for preset in all_presets():
        note = " ♪" if preset.moves else ""
        print(f"| **{preset.name}**{note} | {preset.family} | {preset.play} | {preset.listen} |")


if __name__ == "__main__":
    print_table()
