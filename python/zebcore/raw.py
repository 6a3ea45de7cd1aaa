"""The library itself: its functions, structs and constants as C has them.

Everything else in the package goes through here. Hosts seldom need to: what is called here is
neither checked nor kept alive, and a report of it becomes an exception of the package's next call.

The declarations below are the header's, less the names of arguments; the tests compare them. A
pointer is an address: an int, an array of ctypes, or None.
"""
from __future__ import annotations

import ctypes as c
import ctypes.util
import os
import re
import sys
from pathlib import Path
from typing import Any

SIGNATURES = """
unsigned short zebQuark(const char*)
void zebFrameBegin(void)
void zebFrameEnd(void)
void zebSceneBegin(void)
void zebSceneEnd(void)
void zebRasterViewport(long, long, long, long)
void zebRasterAspect(float)
void zebImageWindow(float, float, float, float)
void zebImageAspect(float)
void zebImageCrop(float, float, float, float)
void zebViewOrthographic(void)
void zebViewPerspective(float)
void zebViewIdentity(void)
void zebClip(float, float)
void zebSampleAdaptive(float)
void zebSampleUniform(float, float)
void zebSampleJitter(float)
void zebFilter(short)
void zebCustomFilter(ZebFilterFunction)
void zebFilterWidth(float, float)
void zebColorGain(float)
void zebColorGamma(float)
void zebColorQuantize(long, long, long)
void zebColorJitter(float)
void zebDepthQuantize(long, long, long)
void zebDepthJitter(float)
void zebOutputDisplay(const char*)
void zebOutputFile(short, const char*)
void zebOutputSamples(short)
void zebHider(short)
void zebColorSpace(long, const float*, const float*)
void zebTune(long, long, long)
void zebAttributePush(void)
void zebAttributePop(void)
void zebColor(const float*)
void zebOpacity(const float*)
void zebShadingRate(float)
void zebShadingModel(short)
void zebMatteObject(short)
const void* zebLightSource(unsigned short, ...)
const void* zebLightSourceV(unsigned short, long, const unsigned short*, void* const*)
void zebLightSwitch(const void*, short)
void zebSurface(unsigned short, ...)
void zebSurfaceV(unsigned short, long, const unsigned short*, void* const*)
void zebAtmosphere(unsigned short, ...)
void zebAtmosphereV(unsigned short, long, const unsigned short*, void* const*)
void zebBound(const float*)
void zebFlatness(float)
void zebOrientation(short)
void zebBackface(short)
void zebObjectName(const char*)
void zebGroupName(const char*)
void zebBasis(short, short)
void zebCustomBasis(short, ZebMatrix, long)
void zebMatrixPush(void)
void zebMatrixPop(void)
void zebLoadIdentity(void)
void zebLoadMatrix(ZebMatrix)
void zebMultMatrix(ZebMatrix)
void zebPerspective(float)
void zebTranslate(float, float, float)
void zebRotate(float, float, float, float)
void zebScale(float, float, float)
void zebSkew(float, float, float, float, float, float, float)
void zebMarkSpace(unsigned short)
ZebPoint* zebProjectPoints(unsigned short, unsigned short, long, ZebPoint*)
void zebPolygon(long, ...)
void zebPolygonV(long, long, const unsigned short*, void* const*)
void zebGeneralPolygon(long, const long*, ...)
void zebGeneralPolygonV(long, const long*, long, const unsigned short*, void* const*)
void zebPolygonMesh(long, const long*, const long*, ...)
void zebPolygonMeshV(long, const long*, const long*, long, const unsigned short*, void* const*)
void zebGeneralPolygonMesh(long, const long*, const long*, const long*, ...)
void zebGeneralPolygonMeshV(long, const long*, const long*, const long*, long, const unsigned short*, void* const*)
void zebPatch(short, ...)
void zebPatchV(short, long, const unsigned short*, void* const*)
void zebPatchMesh(short, long, short, long, short, ...)
void zebPatchMeshV(short, long, short, long, short, long, const unsigned short*, void* const*)
void zebNurb(long, const float*, float, float, long, const float*, float, float, ...)
void zebNurbV(long, const float*, float, float, long, const float*, float, float, long, const unsigned short*, void* const*)
void zebNurbMesh(long, long, const float*, float, float, long, long, const float*, float, float, ...)
void zebNurbMeshV(long, long, const float*, float, float, long, long, const float*, float, float, long, const unsigned short*, void* const*)
void zebSphere(float, float, float, float, ...)
void zebSphereV(float, float, float, float, long, const unsigned short*, void* const*)
void zebCone(float, float, float, float, ...)
void zebConeV(float, float, float, float, long, const unsigned short*, void* const*)
void zebCylinder(float, float, float, float, ...)
void zebCylinderV(float, float, float, float, long, const unsigned short*, void* const*)
void zebHyperboloid(const float*, const float*, float, ...)
void zebHyperboloidV(const float*, const float*, float, long, const unsigned short*, void* const*)
void zebParaboloid(float, float, float, float, ...)
void zebParaboloidV(float, float, float, float, long, const unsigned short*, void* const*)
void zebDisk(float, float, float, ...)
void zebDiskV(float, float, float, long, const unsigned short*, void* const*)
void zebTorus(float, float, float, float, float, ...)
void zebTorusV(float, float, float, float, float, long, const unsigned short*, void* const*)
void zebProcedural(void*, const float*, ZebSubdivideFunction, ZebFreeFunction)
const void* zebObjectBegin(void)
void zebObjectEnd(void)
void zebObjectCall(const void*)
void zebErrorHandler(short, short)
void zebCustomErrorHandler(short, ZebErrorFunction)
long zebLastError(void)
void zebComment(const char*)
void zebReset(void)
void zebErrorPrinter(ZebPrintFunction)
void zebRenderInit(void)
short zebRenderBucket(void)
long zebProgress(void)
void zebBoundDisplacement(float)
void zebMotionBegin(long, ...)
void zebMotionBeginV(long, float*)
void zebMotionEnd(void)
void zebCustomDisplay(const ZebDisplay*)
unsigned short zebDeclare(const char*, short, short)
void zebArray(const void*, long, long)
void zebQuirks(short)
void zebDepthNearest(short)
void zebLookAt(const float*, const float*, const float*)
void zebSpheres(long, const float*, const float*, ...)
void zebSpheresV(long, const float*, const float*, long, const unsigned short*, void* const*)
void zebCancel(void)
void zebProgressCallback(ZebProgressFunction, void*)
void zebThreads(long)
short zebWindowEvents(short)
long zebVersion(void)
void zebCustomSurface(const ZebShader*)
void zebCustomAtmosphere(const ZebShader*)
const void* zebCustomLight(const ZebShader*)
void zebCustomDisplacement(const ZebShader*)
void zebTextureCoordinates(float, float, float, float, float, float, float, float)
float* zebRowPlane(const ZebRow*)
float* zebRowVariable(const ZebRow*, unsigned short, long)
const int* zebRowInteger(const ZebRow*, unsigned short)
const char* zebRowString(const ZebRow*, unsigned short)
void zebRowAmbient(const ZebRow*, float* const*)
void zebRowDiffuse(const ZebRow*, float* const*, float* const*)
void zebRowSpecular(const ZebRow*, float* const*, float* const*, float, float* const*)
void zebRowPhong(const ZebRow*, float* const*, float* const*, float, float* const*)
long zebRowLights(const ZebRow*)
short zebRowLight(const ZebRow*, long, float* const*, float* const*, float* const*)
void zebRowFacing(const ZebRow*, float* const*, float* const*)
void zebRowDifferences(const ZebRow*, const float*, float*, float*)
void zebRowNormals(const ZebRow*, float* const*, float* const*)
void zebRowTransform(const ZebRow*, unsigned short, unsigned short, short, float* const*, float* const*)
void zebRowNoise(const ZebRow*, long, float* const*, const long*, float*)
void zebRowTurbulence(const ZebRow*, long, float* const*, long, float, short, float*)
void zebRowStep(const ZebRow*, float, const float*, float*)
void zebRowChecks(const ZebRow*, const float*, const float*, float*)
const void* zebImage(long, long, long, const float*, short)
void zebImageFree(const void*)
void zebRowImage(const ZebRow*, const void*, const float*, const float*, float, float* const*)
"""

ZEB_FILTER_GAUSSIAN = 0x100
ZEB_FILTER_CATMULL_ROM = 0x101
ZEB_FILTER_BOX = 0x102
ZEB_FILTER_TRIANGLE = 0x103
ZEB_FILTER_SINC = 0x104
ZEB_FILE_AUTO = 0x200
ZEB_FILE_PNG = 0x201
ZEB_FILE_EXR = 0x202
ZEB_FILE_PNG_INDEXED = 0x203
ZEB_SAMPLES_RGB = 0x301
ZEB_SAMPLES_ALPHA = 0x302
ZEB_SAMPLES_DEPTH = 0x304
ZEB_SAMPLES_RGBA = 0x303
ZEB_SAMPLES_RGBZ = 0x305
ZEB_SAMPLES_RGBAZ = 0x307
ZEB_HIDER_NULL = 0
ZEB_HIDER_HIDDEN = 0x400
ZEB_HIDER_SEQUENCE = 0x401
ZEB_CONSTANT = 0x500
ZEB_SMOOTH = 0x501
ZEB_OUTSIDE = 0x600
ZEB_INSIDE = 0x601
ZEB_LEFT_HANDED = 0x602
ZEB_RIGHT_HANDED = 0x603
ZEB_REVERSE = 0x604
ZEB_BILINEAR = 0x700
ZEB_BICUBIC = 0x701
ZEB_APPLY_U = 0x800
ZEB_APPLY_V = 0x801
ZEB_APPLY_BOTH = 0x802
ZEB_BASIS_BEZIER = 0x900
ZEB_BASIS_BSPLINE = 0x901
ZEB_BASIS_CATMULL_ROM = 0x902
ZEB_BASIS_HERMITE = 0x903
ZEB_BASIS_POWER = 0x904
ZEB_PERIODIC = 0xA00
ZEB_NONPERIODIC = 0xA01
ZEB_INFO = 0xB01
ZEB_WARNING = 0xB02
ZEB_ERROR = 0xB04
ZEB_SEVERE = 0xB08
ZEB_ALL = 0xB0F
ZEB_ERROR_IGNORE = 0xC00
ZEB_ERROR_PRINT = 0xC01
ZEB_ERROR_ABORT = 0xC02
ZEB_CLASS_NONE = 0xD00
ZEB_UNIFORM = 0xD01
ZEB_VARYING = 0xD02
ZEB_VERTEX = 0xD03
ZEB_TYPE_NONE = 0xE00
ZEB_FLOAT = 0xE01
ZEB_INTEGER = 0xE02
ZEB_STRING = 0xE03
ZEB_PAIR = 0xE04
ZEB_POINT = 0xE05
ZEB_POINTW = 0xE06
ZEB_COLOR = 0xE07
ZEB_SHADE_ANYWHERE = 1
ZEB_SHADE_OPACITY = 2
ZEB_SHADE_AMBIENT = 4
ZEB_TRANSFORM_POINT = 0xF10
ZEB_TRANSFORM_VECTOR = 0xF11
ZEB_TRANSFORM_NORMAL = 0xF12
ZEB_IMAGE_CLAMP = 0xF00
ZEB_IMAGE_REPEAT = 0xF01
ZEB_IMAGE_MIRROR = 0xF02
ZEB_IMAGE_BLACK = 0xF03

# Functions that may render, or wait: other threads of Python run meanwhile. The others are short,
# and keep the interpreter's lock, so that no two threads are in the library at once.
LONG_CALLS = {"zebSceneBegin", "zebSceneEnd", "zebRenderInit", "zebRenderBucket", "zebWindowEvents",
              "zebFrameEnd", "zebReset"}

_SCALARS: dict[str, Any] = {
    "void": None, "short": c.c_short, "unsigned short": c.c_ushort, "long": c.c_long,
    "float": c.c_float, "const char*": c.c_char_p,
}

SubdivideFunction = c.CFUNCTYPE(None, c.c_void_p, c.c_float)
FreeFunction = c.CFUNCTYPE(None, c.c_void_p)
FilterFunction = c.CFUNCTYPE(c.c_float, c.c_float, c.c_float, c.c_float, c.c_float)
ErrorFunction = c.CFUNCTYPE(None, c.c_long, c.c_long, c.c_char_p)
PrintFunction = c.CFUNCTYPE(None, c.c_char_p)
ProgressFunction = c.CFUNCTYPE(c.c_short, c.c_void_p, c.c_long)
ShadeFunction = c.CFUNCTYPE(None, c.c_void_p, c.c_void_p)
OpenFunction = c.CFUNCTYPE(None, c.c_void_p, c.c_char_p, c.c_long, c.c_long, c.c_long, c.c_long)
SpanFunction = c.CFUNCTYPE(None, c.c_void_p, c.c_long, c.c_long, c.c_long, c.c_void_p)
FlushFunction = c.CFUNCTYPE(None, c.c_void_p, c.c_long, c.c_long)
CloseFunction = c.CFUNCTYPE(None, c.c_void_p)


class ZebDisplay(c.Structure):
    """A device of the host's own."""

    _fields_ = [("data", c.c_void_p), ("open", OpenFunction), ("span", SpanFunction),
                ("flush", FlushFunction), ("close", CloseFunction)]


class ZebShader(c.Structure):
    """A function that shades, and what belongs to it."""

    _fields_ = [("data", c.c_void_p), ("shade", ShadeFunction), ("free", FreeFunction),
                ("flags", c.c_long)]


_three = c.c_void_p * 3


class ZebRow(c.Structure):
    """Points that are shaded together: how many, and the addresses of their planes."""

    _fields_ = [("count", c.c_long), ("P", _three), ("N", _three), ("Ng", _three), ("I", _three),
                ("dPdu", _three), ("dPdv", _three), ("u", c.c_void_p), ("v", c.c_void_p),
                ("s", c.c_void_p), ("t", c.c_void_p), ("du", c.c_void_p), ("dv", c.c_void_p),
                ("Cs", _three), ("Os", _three), ("Ci", _three), ("Oi", _three), ("L", _three),
                ("Cl", _three), ("Ol", _three)]


def _ctype(name: str) -> Any:
    return _SCALARS.get(name, c.c_void_p)


def parse(line: str) -> tuple[str, str, list[str]]:
    """Takes a declaration apart: what it returns, its name, the types of its arguments."""
    match = re.fullmatch(r"(.*?)\s*(zeb\w+)\((.*)\)", line)
    assert match
    returns, name, arguments = match.groups()
    return returns, name, [] if arguments == "void" else arguments.split(", ")


def _candidates() -> list[str]:
    here = Path(__file__).resolve().parent
    named = os.environ.get("ZEBCORE_LIBRARY")
    if named:
        return [named]
    name = "zebcore.dll" if sys.platform == "win32" else "libzebcore.so"
    found = [str(here / name)] if (here / name).exists() else []
    system = ctypes.util.find_library("zebcore")
    return found + ([system] if system else []) + [name if sys.platform == "win32" else name + ".0"]


def _open() -> tuple[c.CDLL, c.CDLL]:
    tried = []
    for path in _candidates():
        try:
            return c.CDLL(path), c.PyDLL(path)
        except OSError as error:
            tried.append(str(error))
    raise ImportError("the library of zebcore is not there; ZEBCORE_LIBRARY can name its file ("
                      + "; ".join(tried) + ")")


class Library:
    """Every function as an attribute, by its name in C."""

    def __init__(self) -> None:
        long, short = _open()
        for line in SIGNATURES.strip().splitlines():
            returns, name, arguments = parse(line)
            try:
                function = getattr(long if name in LONG_CALLS else short, name)
            except AttributeError:
                raise ImportError(f"the library {long._name} has no {name}") from None
            function.restype = _ctype(returns)
            function.argtypes = [_ctype(a) for a in arguments if a != "..."]
            setattr(self, name, function)
        self.path = long._name

    def __getattr__(self, name: str) -> Any:
        raise AttributeError(f"the library {self.path} has no {name}")


lib = Library()
