"""The declarations of zebcore.raw are those of the header, and all of it can be reached."""
import ctypes
import re
from pathlib import Path

import pytest
import zebcore as zeb
from zebcore import _arrays, raw

ROOT = Path(__file__).resolve().parents[2]
HEADER = (ROOT / "include/zebcore/zebcore.h").read_text()
CODE = re.sub(r"/\*.*?\*/", "", HEADER, flags=re.S)


def spaced(text):
    return " ".join(text.split())


def declared():
    """The header's functions as raw.SIGNATURES writes them: without the names of arguments."""
    found = {}
    for match in re.finditer(r"ZEB_API ([^;(]*?)\b(zeb\w+)\(([^;]*?)\)\s*(?:ZEB_DECORATED\(.*?\))?;",
                             CODE, re.S):
        returns, name, arguments = match.groups()
        types = [a if a in ("void", "...") else spaced(re.sub(r"\b\w+$", "", a))
                 for a in (spaced(a) for a in arguments.split(","))]
        found[name] = f"{spaced(returns)} {name}({', '.join(types)})"
    return found


def test_functions_are_declared_as_in_the_header():
    header = declared()
    assert len(header) > 150
    table = {raw.parse(line)[1]: line for line in raw.SIGNATURES.strip().splitlines()}
    assert table == header


def test_constants_are_those_of_the_header():
    header = {name: int(value, 0) for name, value in
              re.findall(r"#define (ZEB_\w+) (0x[0-9A-F]+|\d+)\b", CODE)}
    mine = {name: value for name, value in vars(raw).items() if name.startswith("ZEB_")}
    assert len(header) > 60
    assert mine == header


def members(struct):
    body = re.search(r"typedef struct " + struct + r" \{(.*?)\} " + struct + ";", CODE, re.S).group(1)
    for member in body.split(";"):
        match = re.search(r"\(\*(\w+)\)|(\w+)(\[3\])?\s*$", spaced(member))
        if match:
            yield match.group(1) or match.group(2), match.group(3) is not None, spaced(member)


@pytest.mark.parametrize("struct", ["ZebDisplay", "ZebShader", "ZebRow"])
def test_structs_have_the_members_of_the_header(struct):
    fields = getattr(raw, struct)._fields_
    header = list(members(struct))
    assert [name for name, _ in fields] == [name for name, _, _ in header]
    for (name, kind), (_, triple, text) in zip(fields, header):
        size = ctypes.sizeof(ctypes.c_long if text.startswith("long ") else ctypes.c_void_p)
        assert ctypes.sizeof(kind) == (3 if triple else 1) * size, name


def test_functions_of_the_host_take_what_the_header_says():
    scalars = {"short": ctypes.c_short, "long": ctypes.c_long, "float": ctypes.c_float, "void": None,
               "const char*": ctypes.c_char_p}
    found = 0
    for returns, name, arguments in re.findall(r"typedef (\w+) \(\*Zeb(\w+Function)\)\((.*?)\);", CODE,
                                               re.S):
        types = [re.sub(r" ?\w+$", "", spaced(a)) for a in arguments.split(",")]
        mine = getattr(raw, name)
        assert mine._restype_ == scalars[returns], name
        assert list(mine._argtypes_) == [scalars.get(t, ctypes.c_void_p) for t in types], name
        found += 1
    assert found == 7


def test_every_function_is_used_by_the_package():
    package = Path(zeb.__file__).parent
    text = "".join(path.read_text() for path in package.glob("_*.py"))
    used = set(re.findall(r"\blib\.(zeb\w+)|\"(zebCustom\w+)\"", text))
    used = {a or b for a, b in used}
    # Those with a variable list are reached by their forms that take arrays.
    missing = {name for name in declared() if name not in used and name + "V" not in used}
    assert not missing


def test_names_from_the_start_have_the_numbers_of_the_header():
    listed = re.search(r"as tokens 1 to 36: (.*?)\. Two", spaced(HEADER.replace("*", ""))).group(1)
    names = re.split(r"[,;] ", listed)
    assert len(names) == 36
    assert [_arrays.tokens[name].number for name in names] == list(range(1, 37))


def test_every_public_name_is_documented():
    for name in zeb.__all__:
        thing = getattr(zeb, name)
        if callable(thing):
            assert thing.__doc__, name
            if isinstance(thing, type):
                for member, value in vars(thing).items():
                    if not member.startswith("_") and (callable(value) or isinstance(value, property)):
                        assert value.__doc__, f"{name}.{member}"


def test_the_version_is_that_of_the_project():
    project = (ROOT / "CMakeLists.txt").read_text()
    assert zeb.__version__ == re.search(r"project\(zebcore VERSION ([\d.]+)", project).group(1)
