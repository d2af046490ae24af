"""Reads a workbook with openpyxl, independently of the program's own reader, and prints what
the tests check as JSON: the first sheet's cells with their font, alignment and fill, merged
ranges, column widths, pictures, the workbook's number of cell formats, the order of the rows
in the sheet part, and each zip part's checksum and stored (compressed) size.

usage: dump_workbook.py WORKBOOK
"""
import json
import re
import sys
import zipfile

import openpyxl


def cell_facts(cell):
    fill = cell.fill.fgColor.rgb if cell.fill and cell.fill.fill_type == "solid" else None
    return {
        "value": cell.value,
        "font": cell.font.name,
        "bold": bool(cell.font.b),
        "horizontal": cell.alignment.horizontal,
        "vertical": cell.alignment.vertical,
        "fill": fill if isinstance(fill, str) else None,
    }


def picture_facts(image):
    anchor = image.anchor._from
    return {
        "row": anchor.row + 1,
        "column": anchor.col + 1,
        "format": image.format,
    }


def row_order(path, sheet_part):
    """The row numbers in the order the sheet part lists them (openpyxl sorts them itself)."""
    with zipfile.ZipFile(path) as archive:
        xml = archive.read(sheet_part).decode("utf-8")
    return [int(number) for number in re.findall(r'<row[^>]*\sr="(\d+)"', xml)]


def part_facts(path):
    with zipfile.ZipFile(path) as archive:
        return {info.filename: f"{info.CRC:08x} {info.compress_size}" for info in archive.infolist()}


def main():
    workbook = openpyxl.load_workbook(sys.argv[1])
    sheet = workbook.worksheets[0]
    cells = {}
    for row in sheet.iter_rows():
        for cell in row:
            if cell.value is not None:
                cells[cell.coordinate] = cell_facts(cell)
    widths = {key: dim.width for key, dim in sheet.column_dimensions.items() if dim.customWidth}
    print(json.dumps({
        "cells": cells,
        "merged": sorted(str(cells) for cells in sheet.merged_cells.ranges),
        "widths": widths,
        "pictures": [picture_facts(image) for image in sheet._images],
        "cellFormats": len(workbook._cell_styles),
        "rowOrder": row_order(sys.argv[1], "xl/worksheets/sheet1.xml"),
        "parts": part_facts(sys.argv[1]),
    }, ensure_ascii=False, default=str))


main()
