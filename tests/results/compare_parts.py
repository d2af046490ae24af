"""Compares the parts of two zip files and prints, as JSON, which parts differ in content or in
their stored (compressed) size, and which are only in one of them.

usage: compare_parts.py BEFORE AFTER
"""
import json
import sys
import zipfile


def parts(path):
    with zipfile.ZipFile(path) as archive:
        return {info.filename: (archive.read(info), info.compress_size, info.CRC)
                for info in archive.infolist()}


def main():
    before, after = parts(sys.argv[1]), parts(sys.argv[2])
    print(json.dumps({
        "changed": sorted(name for name in before if name in after and before[name] != after[name]),
        "removed": sorted(name for name in before if name not in after),
        "added": sorted(name for name in after if name not in before),
    }))


main()
