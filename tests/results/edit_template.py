"""Edits a template the way a user would in a spreadsheet program: a note in a new cell, a fill
colour on the maker's cell, a wider column and, with --logo, a picture in the top rows.

usage: edit_template.py TEMPLATE NOTE_CELL [--logo PNG]
"""
import sys

import openpyxl
from openpyxl.drawing.image import Image
from openpyxl.styles import PatternFill


def main():
    path, note_cell = sys.argv[1], sys.argv[2]
    workbook = openpyxl.load_workbook(path)
    sheet = workbook.worksheets[0]
    sheet[note_cell] = "User note"
    sheet["A1"].fill = PatternFill(fill_type="solid", fgColor="FFFFC000")
    sheet.column_dimensions["B"].width = 33
    if "--logo" in sys.argv:
        logo = Image(sys.argv[sys.argv.index("--logo") + 1])
        sheet.add_image(logo, "A4")
    workbook.save(path)


main()
