#!/usr/bin/env python3
"""Writes documents to try a large run on.

generate.py FOLDER COUNT

Writes COUNT map sources of about 2 KB, 1,000 to a folder. Every 500th has a misspelt element.
"""
import pathlib
import sys

LAYER = """  <layer caption='Layer {0}' max-zoom='20' min-zoom='{0}' name='layer-{0}' opacity='0.85' visible='true'>
    <attribution xml:lang='en'>© the contributors of document {1}</attribution>
  </layer>
"""


def write_document(path, number):
    layers = "".join(LAYER.format(level, number) for level in range(10))
    if number % 500 == 0:
        layers = layers.replace("<attribution", "<atribution", 1).replace("</attribution", "</atribution", 1)
    path.write_text(
        f"<?xml version='1.0' encoding='utf-8'?>\n<map-source name='Map {number}' version='18.1'>\n"
        f"  <server format='vector' url='https://tiles.example.com/{{z}}/{{x}}/{{y}}'/>\n{layers}</map-source>\n",
        encoding="utf-8")


def main():
    folder, count = pathlib.Path(sys.argv[1]), int(sys.argv[2])
    for number in range(1, count + 1):
        part = folder / f"{(number - 1) // 1000:04}"
        if (number - 1) % 1000 == 0:
            part.mkdir(parents=True, exist_ok=True)
        write_document(part / f"{number:07}.kxd", number)


if __name__ == "__main__":
    main()
