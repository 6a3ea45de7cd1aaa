"""zebcore renders curved surfaces, meshes and points to NumPy arrays.

    import numpy as np, zebcore as zeb

    with zeb.Picture(640, 480, samples=4, gamma=2.2) as picture:
        zeb.perspective(30); zeb.translate(0, 0, 5)
        with picture.world():
            zeb.light("distant", to=(1, -1, 1))
            with zeb.attributes(color=(.8, .3, .2)):
                zeb.sphere(1)
    picture.save("sphere.png")

A picture is described in blocks: options and the camera in a `Picture`, then lights, attributes,
transformations and primitives in its world, whose end renders. The library has one state: all calls
from the first block to the end of the last come from one thread.
"""
from . import raw
from ._arrays import declare, quark
from ._attributes import (apply_matrix, apply_perspective, atmosphere_shader, attributes, basis,
                          bound, color, displacement_bound, displacement_shader, flatness,
                          group_name, load_identity, load_matrix, look_at, mark_space, matte, motion,
                          object_name, opacity, orientation, project_points, rotate, scale,
                          shading_model, shading_rate, sides, skew, surface_shader,
                          texture_coordinates, transform, translate)
from ._core import Error, Info, Warning, reset
from ._messages import comment, error_handler, error_printer, last_error, version
from ._options import (clip, color_gain, color_gamma, color_jitter, color_quantize, color_space,
                       custom_display, depth_jitter, depth_nearest, depth_quantize, filter,
                       filter_width, hider, image_aspect, image_crop, image_window, orthographic,
                       output_display, output_file, output_samples, perspective, progress_callback,
                       quirks, raster_aspect, raster_viewport, sample_adaptive, sample_jitter,
                       sample_uniform, threads, tune, view_identity)
from ._picture import (Picture, cancel, frame, progress, render_bucket, render_init, window_events,
                       world)
from ._primitives import (Light, Object, cone, cylinder, disk, general_mesh, general_polygon,
                          hyperboloid, light, mesh, nurb, nurb_mesh, paraboloid, patch, patch_mesh,
                          polygon, procedural, sphere, spheres, torus)
from ._row import Image, Row, rgb
from ._shading import Shader, atmosphere, displacement, light_shader, surface

__version__ = version()
__all__ = [
    "Error", "Image", "Info", "Light", "Object", "Picture", "Row", "Shader", "Warning",
    "apply_matrix", "apply_perspective", "atmosphere", "atmosphere_shader", "attributes",
    "basis", "bound", "cancel", "clip", "color", "color_gain", "color_gamma", "color_jitter",
    "color_quantize", "color_space", "comment", "cone", "custom_display", "cylinder", "declare",
    "depth_jitter", "depth_nearest", "depth_quantize", "disk", "displacement",
    "displacement_bound", "displacement_shader", "error_handler", "error_printer", "filter",
    "filter_width", "flatness", "frame", "general_mesh", "general_polygon", "group_name",
    "hider", "hyperboloid", "image_aspect", "image_crop", "image_window", "last_error", "light",
    "light_shader", "load_identity", "load_matrix", "look_at", "mark_space", "matte", "mesh",
    "motion", "nurb", "nurb_mesh", "object_name", "opacity", "orientation", "orthographic",
    "output_display", "output_file", "output_samples", "paraboloid", "patch", "patch_mesh",
    "perspective", "polygon", "procedural", "progress", "progress_callback", "project_points",
    "quark", "quirks", "raster_aspect", "raster_viewport", "raw", "render_bucket", "render_init",
    "reset", "rgb", "rotate", "sample_adaptive", "sample_jitter", "sample_uniform", "scale",
    "shading_model", "shading_rate", "sides", "skew", "sphere", "spheres", "surface",
    "surface_shader", "texture_coordinates", "threads", "torus", "transform", "translate",
    "tune", "version", "view_identity", "window_events", "world",
]
