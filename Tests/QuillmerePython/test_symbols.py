"""Other modules of the same process see of this one where it begins, and nothing else."""
import os
import subprocess

from quillmere import _core


def symbols(*arguments):
    """The rows of a table of symbols: number, value, size, type, binding, visibility, section, name."""
    shown = subprocess.run(["readelf", "--wide", *arguments], text=True, capture_output=True, check=True).stdout
    rows = [line.split() for line in shown.splitlines()]
    return [row for row in rows if len(row) >= 8 and row[0].rstrip(":").isdigit() and row[6] != "UND"]


def test_the_module_exports_its_beginning_alone():
    assert [row[7] for row in symbols("--dyn-syms", _core.__file__)] == ["PyInit__core"]


def test_the_archive_has_nothing_for_others_than_what_it_becomes_a_part_of():
    ours = [row for row in symbols("--symbols", os.environ["QUILLMERE_TEST_ARCHIVE"])
            if row[4] != "LOCAL" and "9quillmere" in row[7]]
    assert len(ours) > 700
    assert [row[7] for row in ours if row[5] == "DEFAULT"] == []
