"""What the documents show works, and the examples make pictures."""
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import numpy as np
import pytest
import zebcore as zeb
from test_picture import decode

ROOT = Path(__file__).resolve().parents[2]
PAGE = (ROOT / "docs/python.md").read_text()
EXAMPLES = sorted((ROOT / "python/examples").glob("*.py"))


def blocks(text):
    return re.findall(r"```python\n(.*?)```", text, re.S)


def run(command, folder, **options):
    return subprocess.run([sys.executable, *command], cwd=folder, capture_output=True, text=True, timeout=120,
                          **options)


@pytest.mark.parametrize("document", ["docs/python.md", "python/README.md"])
def test_the_first_example_can_be_pasted_into_an_interpreter(document, tmp_path):
    """Line by line, as it is typed: an empty line ends a block, and none may stand in one."""
    code = blocks((ROOT / document).read_text())[0]
    done = run(["-i", "-q"], tmp_path, input=code)
    assert done.returncode == 0
    assert re.sub(r"(>>>|\.\.\.) ?", "", done.stderr).strip() == ""
    pixels = decode((tmp_path / "checks.png").read_bytes())
    assert (pixels[..., 3] == 255).mean() > 0.2 and len(np.unique(pixels[..., 0])) > 50


def test_other_code_stands_in_an_example():
    examples = "".join(path.read_text() for path in EXAMPLES)
    shown = blocks(PAGE)[1:]
    assert len(shown) >= 4
    for block in shown:
        assert block in examples, block


def test_names_in_the_documents_are_there():
    for text in (PAGE, (ROOT / "python/README.md").read_text(), (ROOT / "README.md").read_text()):
        for name in re.findall(r"\bzeb\.(\w+)", text):
            assert hasattr(zeb, name), name


def test_the_table_of_names_covers_all_that_is_called_otherwise():
    """Every function of C is a name of the package by the rule, or is in the table."""
    table = PAGE[PAGE.index("| in C | here |"):]
    for line in zeb.raw.SIGNATURES.strip().splitlines():
        name = zeb.raw.parse(line)[1]
        plain = re.sub(r"V$", "", name)
        snake = re.sub(r"(?<!^)(?=[A-Z])", "_", plain[3:]).lower()
        if name.startswith("zebRow") or hasattr(zeb, snake):
            continue
        assert re.search(rf"\b{plain}V?\(\)", table), name


@pytest.mark.parametrize("path", EXAMPLES, ids=lambda path: path.stem)
def test_an_example_makes_its_picture(path, tmp_path):
    moves = path.stem == "turntable"
    if moves and not shutil.which("convert"):
        pytest.skip("no convert")
    file = tmp_path / f"out.{'gif' if moves else 'png'}"
    done = run([str(path), str(file)], tmp_path, env=dict(os.environ, PYTHONDONTWRITEBYTECODE="1"))
    assert done.returncode == 0 and not done.stderr, done.stderr
    if moves:
        assert file.read_bytes().startswith(b"GIF8") and file.stat().st_size > 10_000
    else:
        pixels = decode(file.read_bytes())
        assert pixels.shape[1] == 480 and (pixels[..., 3] > 0).mean() > 0.1
        assert len(np.unique(pixels[..., :3].reshape(-1, 3), axis=0)) > 500
