/**
 * @file zebcore.h
 * The whole interface of zebcore, a renderer for curved surfaces: bucketed micropolygon rendering
 * behind flat C calls. Compiles as C99 and as C++17.
 *
 * A picture is described in nested blocks. Options (resolution, camera, sampling, output) are set
 * outside any block or in a frame block; attributes, transformations, lights and primitives follow
 * in a world block (zebSceneBegin ... zebSceneEnd), whose end renders the picture:
 *
 *     zebRasterViewport(0, 320, 0, 240);
 *     zebOutputFile(ZEB_FILE_PNG, "first.png");
 *     zebViewPerspective(45);
 *     zebTranslate(0, 0, 5);
 *     zebSceneBegin();
 *     zebLightSource(zebQuark("distant"), 0);
 *     zebPolygon(4, zebQuark("point"), corners, 0);
 *     zebSceneEnd();
 *
 * Blocks. Each function below names the blocks it is legal in. A call elsewhere reports the code
 * given with its family and changes nothing.
 *
 * Parameter lists. Functions that end in "..." take pairs of a token (zebQuark) and a pointer to
 * its values, ended by a single 0. The form whose name ends in V takes the same list as a count, an
 * array of tokens and an array of pointers. Values are copied; nothing the host passes is kept,
 * but for the data pointer of a procedural and the callbacks.
 *
 * Coordinates. Points are row vectors. Camera space looks along +z, x to the right, y up. Angles
 * are degrees, raster y grows downwards.
 *
 * Errors. No function fails by a return code alone: problems are reported through handlers
 * (zebErrorHandler) and the refused call leaves the state as it was. Besides what each function
 * names, NaN and infinite numbers, null pointers with a non-zero count, and counts that are
 * negative, zero or absurd report code 10 or 11.
 *
 * Callbacks. Filters, both functions of procedurals, devices, error handlers and printers may make
 * calls. While one of them runs, no other call counts as under way: a report carries the name of
 * the call that the callback itself has made, and when it returns, that of the outer call again.
 * zebReset has no name in reports: refused in a callback, it reports code 8 without a message.
 *
 * Memory. A call that finds none left reports code 1, severe, and ends the process. What the host
 * allocates in its callbacks, and on other threads, fails as it would without the library.
 *
 * Threads. All calls come from one thread, and all callbacks run on it, whatever zebThreads says:
 * but for functions that shade, if they say that they may run anywhere (ZEB_SHADE_ANYWHERE).
 */
#ifndef ZEBCORE_ZEBCORE_H
#define ZEBCORE_ZEBCORE_H

#if defined(_WIN32)
#if defined(ZEB_BUILDING)
#define ZEB_API __declspec(dllexport)
#elif defined(__cplusplus)
#define ZEB_API __declspec(dllimport)
#else
/* Compilers disagree on what dllimport makes of ZEB_DECORATED. C goes through the import library's
   stubs instead. */
#define ZEB_API
#endif
#elif defined(__GNUC__)
#define ZEB_API __attribute__((visibility("default")))
#else
#define ZEB_API
#endif

/* Nine functions are exported under names that carry their argument types. A C++ compiler makes
   those names itself; for a C compiler an assembler label does. */
#define ZEB_LABEL_TEXT_(text) #text
#define ZEB_LABEL_TEXT(text) ZEB_LABEL_TEXT_(text)
#if defined(__cplusplus)
#define ZEB_DECORATED(label)
#else
#define ZEB_DECORATED(label) __asm__(ZEB_LABEL_TEXT(__USER_LABEL_PREFIX__) label)
#endif

/** @name Pixel filters (zebFilter) */
/** @{ */
#define ZEB_FILTER_GAUSSIAN 0x100    /**< the default */
#define ZEB_FILTER_CATMULL_ROM 0x101 /**< sharpens; negative lobes */
#define ZEB_FILTER_BOX 0x102         /**< every sample of the filter's box counts the same */
#define ZEB_FILTER_TRIANGLE 0x103    /**< falls linearly to the box's edge */
#define ZEB_FILTER_SINC 0x104        /**< sin(pi r) / (pi r) */
/** @} */

/** @name Picture file kinds (zebOutputFile) */
/** @{ */
#define ZEB_FILE_AUTO 0x200        /**< by the name's ending */
#define ZEB_FILE_PNG 0x201         /**< 8 or 16 bits, after the quantization in force */
#define ZEB_FILE_EXR 0x202         /**< OpenEXR, float */
#define ZEB_FILE_PNG_INDEXED 0x203 /**< 256 colours at most, the best for the picture; no alpha */
/** @} */

/** @name Output samples (zebOutputSamples); any sum of the three */
/** @{ */
#define ZEB_SAMPLES_RGB 0x301   /**< three words a pixel; the default */
#define ZEB_SAMPLES_ALPHA 0x302 /**< one word */
#define ZEB_SAMPLES_DEPTH 0x304 /**< one word */
#define ZEB_SAMPLES_RGBA 0x303  /**< four words */
#define ZEB_SAMPLES_RGBZ 0x305  /**< four words */
#define ZEB_SAMPLES_RGBAZ 0x307 /**< five words */
/** @} */

/** @name Hiders (zebHider) */
/** @{ */
#define ZEB_HIDER_NULL 0         /**< checks the calls and renders nothing */
#define ZEB_HIDER_HIDDEN 0x400   /**< the nearest surface shows; the default */
#define ZEB_HIDER_SEQUENCE 0x401 /**< the primitive given last shows */
/** @} */

/** @name Shading interpolation (zebShadingModel) */
/** @{ */
#define ZEB_CONSTANT 0x500 /**< one colour a micropolygon; the default */
#define ZEB_SMOOTH 0x501   /**< interpolated over the micropolygon */
/** @} */

/** @name Orientation (zebOrientation) */
/** @{ */
#define ZEB_OUTSIDE 0x600      /**< normals follow the transformation's own handedness; default */
#define ZEB_INSIDE 0x601       /**< and the other way round */
#define ZEB_LEFT_HANDED 0x602  /**< inside, unless the transformation mirrors */
#define ZEB_RIGHT_HANDED 0x603 /**< outside, unless the transformation mirrors */
#define ZEB_REVERSE 0x604      /**< swaps outside and inside */
/** @} */

/** @name Patch types (zebPatch, zebPatchMesh) */
/** @{ */
#define ZEB_BILINEAR 0x700 /**< 2 x 2 points a patch */
#define ZEB_BICUBIC 0x701  /**< 4 x 4 points a patch */
/** @} */

/** @name Basis application (zebBasis, zebCustomBasis) */
/** @{ */
#define ZEB_APPLY_U 0x800    /**< for u */
#define ZEB_APPLY_V 0x801    /**< for v */
#define ZEB_APPLY_BOTH 0x802 /**< for u and v */
/** @} */

/** @name Spline bases (zebBasis) */
/** @{ */
#define ZEB_BASIS_BEZIER 0x900      /**< step 3; the default */
#define ZEB_BASIS_BSPLINE 0x901     /**< step 1 */
#define ZEB_BASIS_CATMULL_ROM 0x902 /**< step 1 */
#define ZEB_BASIS_HERMITE 0x903     /**< step 2 */
#define ZEB_BASIS_POWER 0x904       /**< step 4 */
/** @} */

/** @name Wraps (zebPatchMesh) */
/** @{ */
#define ZEB_PERIODIC 0xA00    /**< the last row joins the first */
#define ZEB_NONPERIODIC 0xA01 /**< open */
/** @} */

/** @name Severities; a mask of several is their sum's low bits with 0xB00 */
/** @{ */
#define ZEB_INFO 0xB01    /**< ignored by default */
#define ZEB_WARNING 0xB02 /**< printed by default */
#define ZEB_ERROR 0xB04   /**< printed by default */
#define ZEB_SEVERE 0xB08  /**< printed, then the process is aborted, by default */
#define ZEB_ALL 0xB0F     /**< the mask of all four */
/** @} */

/** @name Built-in error handlers (zebErrorHandler) */
/** @{ */
#define ZEB_ERROR_IGNORE 0xC00 /**< keeps the code for zebLastError */
#define ZEB_ERROR_PRINT 0xC01  /**< and prints */
#define ZEB_ERROR_ABORT 0xC02  /**< prints, then aborts for anything above an info */
/** @} */

/** @name Storage classes (zebDeclare) */
/** @{ */
#define ZEB_CLASS_NONE 0xD00 /**< a plain name */
#define ZEB_UNIFORM 0xD01    /**< one value a face or curved surface */
#define ZEB_VARYING 0xD02    /**< one value a corner */
#define ZEB_VERTEX 0xD03     /**< one value a control point */
/** @} */

/** @name Value types (zebDeclare) */
/** @{ */
#define ZEB_TYPE_NONE 0xE00 /**< no value */
#define ZEB_FLOAT 0xE01     /**< 32 bits */
#define ZEB_INTEGER 0xE02   /**< 32 bits */
#define ZEB_STRING 0xE03    /**< the value pointer is the character string itself */
#define ZEB_PAIR 0xE04      /**< two floats */
#define ZEB_POINT 0xE05     /**< three floats */
#define ZEB_POINTW 0xE06    /**< four floats: (w x, w y, w z, w) */
#define ZEB_COLOR 0xE07     /**< as many floats as colour samples; three by default */
/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/** Three coordinates. */
typedef float ZebPoint[3];
/** A transformation or basis matrix, row by row; points are row vectors on its left. */
typedef float ZebMatrix[4][4];

/** A pixel filter: the weight of a sample dx, dy pixels from the pixel's centre. */
typedef float (*ZebFilterFunction)(float dx, float dy, float xwidth, float ywidth);
/** Builds the geometry of a procedural; detail is its bound's area in pixels, 1e38 if the bound
    reaches the eye. */
typedef void (*ZebSubdivideFunction)(void* data, float detail);
/** Releases what a procedural's data pointer stands for; called exactly once. */
typedef void (*ZebFreeFunction)(void* data);
/** Receives a report: its code, severity (ZEB_INFO ...) and text, which it must not free. The
    message of a call in the wrong block is the function's bare name; it may be null. */
typedef void (*ZebErrorFunction)(long code, long severity, const char* message);
/** Receives one finished line of a printed report. */
typedef void (*ZebPrintFunction)(const char* line);

/** @name Tokens */
/** @{ */

/**
 * Interns a name.
 *
 * Names are case-sensitive. These 36 exist from the start, as tokens 1 to 36: point, height,
 * pointw, normal, plane, color, opacity; constant, diffuse, metal, plastic; ka, kd, ks, roughness,
 * specularcolor; ambient, omni, distant, spot; intensity, from, to, coneangle, conedeltaangle,
 * beamdistribution; depthcue, fog; hither, yon, distance; raster, image, eye, world, model. Two
 * more come with a class and a type when they are first asked for: vertexcolor, vertexopacity.
 *
 * @param name  copied
 * @return the name's token, always the same; 0 for a null name and when all 65,535 are used.
 *         A new token has no class and no type: good for spaces, not for values (see zebDeclare).
 *
 * Legal anywhere.
 */
ZEB_API unsigned short zebQuark(const char* name);
/** @} */

/** @name Frame and world blocks */
/** @{ */

/** Opens a frame: options, attributes and transformation set in it end with it. Legal outside any
    block; elsewhere code 8. */
ZEB_API void zebFrameBegin(void);
/** Closes the frame, with its lights and objects. Legal in a frame block; elsewhere code 4. */
ZEB_API void zebFrameEnd(void);
/**
 * Opens a world block and fixes the camera: the transformation built so far becomes world to
 * camera, the device is opened, and missing resolution, aspect ratios and screen window are
 * completed, in the options: a frame around each world keeps pictures of different sizes apart.
 * Options can't be changed until zebSceneEnd.
 *
 * Legal outside any block and in a frame; elsewhere code 8.
 */
ZEB_API void zebSceneBegin(void);
/**
 * Renders what the world block holds, closes the device and the block, and releases the block's
 * lights and objects. After staged rendering (zebRenderInit) goes on where that stood.
 *
 * Legal in a world block; elsewhere code 4. From inside a callback: code 8.
 */
ZEB_API void zebSceneEnd(void);
/** @} */

/** @name Options
 * All of them are legal outside any block and in a frame; elsewhere they report code 5. Values are
 * kept for the frame; at the end of a frame those from before return (of the projection: with
 * zebQuirks(0)). */
/** @{ */

/**
 * Sets where the picture lies and how large it is.
 *
 * @param x,y        origin, passed to the device
 * @param xres,yres  pixels across and down; 0 or less takes the device's (640 x 480 for files)
 *
 * Code 10 for a picture no memory could hold.
 */
ZEB_API void zebRasterViewport(long x, long xres, long y, long yres);
/** Sets the width of a pixel divided by its height; 0 takes the device's, which is 1. */
ZEB_API void zebRasterAspect(float aspect);
/** Sets the rectangle of the screen plane that fills the picture, in screen units. A zero width or
    height (the default) makes one from the frame aspect ratio. */
ZEB_API void zebImageWindow(float left, float right, float bottom, float top);
/** Sets the picture's width divided by its height on screen; 0 (default) takes it from resolution
    and pixel aspect. */
ZEB_API void zebImageAspect(float aspect);
/** Sets the part of the picture to render, as fractions 0 to 1, y downwards; swapped bounds are
    put right. Code 10 outside 0 to 1; the values are kept and clamped.

    A part that begins and ends on borders of buckets shows exactly what the whole picture has
   there, to the last bit: pictures can be rendered in tiles, in any order, by any number of
   processes. Along x, borders are the pixels that are multiples of the bucket's width (zebTune),
   and both ends of the picture; along y likewise. For columns b to c - 1, of xres, give (b - 0.5) /
   xres and (c - 0.5) / xres, where rounding does no harm, but 0 at the left end and 1 at the right.
   Reports are those of the part. It may differ where bounds (zebBound, zebProcedural) do not hold
   what they should, where a surface takes too many splits (code 10), and where an instance within a
    procedural rewrites others (zebQuirks). */
ZEB_API void zebImageCrop(float xmin, float xmax, float ymin, float ymax);
/** Makes the current transformation the screen projection, without perspective, and resets the
    transformation to the identity. The default projection. */
ZEB_API void zebViewOrthographic(void);
/** As zebViewOrthographic, with a perspective of the given field of view in degrees, measured
    across the screen window's -1 ... 1. Code 10 outside 1e-10 ... 180, taken as 90. */
ZEB_API void zebViewPerspective(float fov);
/** As zebViewOrthographic, but z is left as it is: surfaces show between z = 0 and z = 1. */
ZEB_API void zebViewIdentity(void);
/** Sets the clipping distances along z in camera space; default 1e-10 and 1e38. Code 10 for near
    below 1e-10 or not below far (1e-10 taken) and for far above 1e38 (1e38 taken). Finite distances
    close to the scene give the depth output its resolution. */
ZEB_API void zebClip(float nearz, float farz);

/** Samples adaptively, 8 to 96 samples a pixel: more while the colour variance exceeds the
    threshold. */
ZEB_API void zebSampleAdaptive(float threshold);
/** Samples uniformly, so many samples a pixel along x and y; default 2 and 2, below 1 is 1. Code 10
    for rates above 128; and when the world opens, for rates at which a single pixel would take more
    than 2^22 samples, those in the reach of its filter included: they are halved until it does not,
    for the picture under way. */
ZEB_API void zebSampleUniform(float xsamples, float ysamples);
/** Sets how far uniform samples stray from their lattice: 0 not at all; default 0.5. Code 10 for
    a negative value. */
ZEB_API void zebSampleJitter(float amount);
/** Chooses a built-in pixel filter (ZEB_FILTER_...). Code 10 for any other number. */
ZEB_API void zebFilter(short id);
/** Makes a function of the host the pixel filter. Code 10 for a null pointer. */
ZEB_API void zebCustomFilter(ZebFilterFunction filter);
/** Sets the pixel filter's box, in pixels; default 2 and 2. By default surfaces are filed for
    filters up to 2 pixels wide, and wider ones show seams between buckets (zebQuirks). Code 10 for
    widths of 0 or less and for absurd ones. */
ZEB_API void zebFilterWidth(float xwidth, float ywidth);

/** Multiplies colours before gamma; default 1. */
ZEB_API void zebColorGain(float gain);
/** Sets the display gamma: colours, multiplied by alpha as they are, are raised to 1 / gamma;
    default 1. OpenEXR files hold light without it: code 2, a warning, says so when the world opens.
    Code 10 below 1e-10. */
ZEB_API void zebColorGamma(float gamma);
/** Sets the integers that colours and alpha become: round(one * value + jitter), clamped to
    min ... max; default 255, 0, 255. one = 0 passes floats, clamped to 0 ... 1, or as they were
    computed (zebQuirks). */
ZEB_API void zebColorQuantize(long one, long min, long max);
/** Sets the dither amplitude added before rounding, in steps; default 0.5. */
ZEB_API void zebColorJitter(float amplitude);
/** zebColorQuantize for depth; default 0, floats, which are always clamped to 0 ... 1. */
ZEB_API void zebDepthQuantize(long one, long min, long max);
/** zebColorJitter for depth; default 0. */
ZEB_API void zebDepthJitter(float amplitude);
/** Sends the picture to a window; the default, with the title "Zebrix". It opens with the world, of
    the picture's size, and shows red, green and blue, or else the first sample as grey, 8 bits
   each. It stays until its user closes it or the process ends; see zebWindowEvents. Opening it
   reports code 2, a warning, where there is no screen, and code 10 for pictures of more than 32767
   pixels a side or 2^28 in all; they are dropped. @param name the title, in UTF-8 */
ZEB_API void zebOutputDisplay(const char* name);
/**
 * Sends the picture to a file. It appears when the world ends, whole or not at all: whatever fails
 * is reported, code 10, and leaves the file that had the name as it was.
 *
 * @param kind ZEB_FILE_...; code 10 for any other number, and where the ending shall tell and names
 * no format
 * @param name a path, on Windows in UTF-8 or else in the system's code page; code 10 for a null or
 * empty one
 *
 * Until the world ends the picture has a file of its own in the same folder: the name, a random
 * number, ".part". An aborted process leaves it behind; the next picture of the name removes it. A
 * file that is replaced passes on its mode and owner, and a symbolic link stays: what it leads to
 * is replaced.
 *
 * Where the folder takes no new file, or the file has another owner, a file that may be written is
 * written in place at the world's end. Code 10, a warning, says so when the world opens: such a
 * file alone is lost if the disk is full. What is no ordinary file, a pipe or a device, gets the
 * picture in one go at the world's end, OpenEXR too; a pipe without a reader is reported, and sends
 * the host no signal.
 *
 * A process made by fork while the world is open does not finish the picture, nor take it away: it
 * is its parent's.
 */
ZEB_API void zebOutputFile(short kind, const char* name);
/** Chooses what each pixel holds (ZEB_SAMPLES_...). Code 10 for any other number.
    Colours are premultiplied. Depth is (z - near) / (far - near) of the z in camera space, linear
    between the clipping distances (zebClip), 1 where nothing is; with zebViewIdentity it is z. It
   is filtered as colours are: at an edge it is a mean of the surface and what lies behind, be it
    nothing (zebDepthNearest). */
ZEB_API void zebOutputSamples(short samples);
/** Chooses the hider (ZEB_HIDER_...). Code 10 for any other number, taken as ZEB_HIDER_HIDDEN. */
ZEB_API void zebHider(short type);
/** Sets the colour space that colour values come in.
    @param n number of samples of a colour, 1 or more
    @param ntorgb n x 3: what each sample adds to red, green and blue
    @param rgbton 3 x n: how many of each sample red, green and blue hold */
ZEB_API void zebColorSpace(long n, const float* ntorgb, const float* rgbton);
/** Sets tuning values.
    @param gridsize largest side of a grid in micropolygons; default 32
    @param width,height of a bucket in pixels; default 12 and 12
    Code 10 for values below 1 and absurd ones; and when the world opens, for a bucket that would
    take more than 2^22 samples at the rates and the filter width in force: its sides are halved
    until it does not, or they are 1; then the rates are halved (zebSampleUniform). How much of the
    picture is rendered does not matter for that (zebImageCrop). */
ZEB_API void zebTune(long gridsize, long width, long height);
/** @} */

/** @name Attribute blocks and attributes
 * zebAttributePush and zebMatrixPush are legal everywhere but in object and motion blocks
 * (elsewhere code 8), their ends in their own block (elsewhere code 4). The attributes are legal
 * everywhere but in an object block (code 6) and are kept to the end of the innermost frame, world,
 * attribute or object block. Inside a motion block only the first call takes effect. */
/** @{ */

/** Opens an attribute block: saves attributes and transformation. */
ZEB_API void zebAttributePush(void);
/** Closes the attribute block: restores attributes and transformation. */
ZEB_API void zebAttributePop(void);
/** Sets the surface colour, as many floats as colour samples; default white. */
ZEB_API void zebColor(const float* color);
/** Sets the opacity, as zebColor: 1 hides what is behind, 0 shows it; default 1. A surface adds
    its colour times the square of its opacity, or times its opacity (zebQuirks). */
ZEB_API void zebOpacity(const float* opacity);
/** Sets the area of a micropolygon in pixels, default 0.25. Code 10 below 1e-10. Below 1/256 it
    renders as 1/256. */
ZEB_API void zebShadingRate(float rate);
/** Chooses ZEB_CONSTANT or ZEB_SMOOTH. Code 10 for any other number. */
ZEB_API void zebShadingModel(short model);
/** Non-zero makes surfaces cut holes: they hide what is behind and stay empty themselves. */
ZEB_API void zebMatteObject(short on);
/**
 * Adds a light and switches it on.
 *
 * | name    | parameters and defaults |
 * |---------|---|
 * | ambient | intensity 1, color white |
 * | distant | intensity, color, from (0 0 0), to (0 0 1) |
 * | omni    | intensity, color, from (0 0 0); falls off with the square of the distance |
 * | spot    | as omni, and to (0 0 1), coneangle 30, conedeltaangle 5, beamdistribution 2 |
 *
 * Points are in the current coordinate system, angles in degrees. A spot whose angles are left
 * unset gets a very narrow cone (zebQuirks).
 *
 * @return a handle for zebLightSwitch, good until the frame or world block ends in which the light
 *         was made; null if refused: code 10 for an unknown name
 */
ZEB_API const void* zebLightSource(unsigned short name, ...);
/** zebLightSource with the parameter list as arrays. */
ZEB_API const void* zebLightSourceV(unsigned short name, long n, const unsigned short* tokens,
                                    void* const* values);
/** Switches a light on (non-zero) or off for what follows. Code 10 for a dead handle. */
ZEB_API void zebLightSwitch(const void* light, short on);
/**
 * Sets the surface shader.
 *
 * | name     | parameters and defaults | colour |
 * |----------|---|---|
 * | constant | none | the surface colour, unlit |
 * | diffuse  | ka 1, kd 1 | C (ka ambient + kd diffuse) |
 * | metal    | ka 1, ks 1, roughness 0.1 | C (ka ambient + ks specular) |
 * | plastic  | ka 1, kd 0.5, ks 0.5, roughness 0.1, specularcolor white | both; the default |
 *
 * Any other name gives plastic. That, and variables which the shader does not read, here and in the
 * other parameter lists, are infos (code 10).
 */
ZEB_API void zebSurface(unsigned short name, ...);
/** zebSurface with the parameter list as arrays. */
ZEB_API void zebSurfaceV(unsigned short name, long n, const unsigned short* tokens,
                         void* const* values);
/** Sets the atmosphere: "depthcue" (hither 0, yon 1, color black), linear in camera z, or "fog"
    (distance 1, color black), exponential. Code 10 for any other name, and then there is none. */
ZEB_API void zebAtmosphere(unsigned short name, ...);
/** zebAtmosphere with the parameter list as arrays. */
ZEB_API void zebAtmosphereV(unsigned short name, long n, const unsigned short* tokens,
                            void* const* values);
/** Promises that what follows lies in a box (xmin, xmax, ymin, ymax, zmin, zmax; object space):
    primitives are bounded by it as well, and those outside it are not drawn. */
ZEB_API void zebBound(const float* bound);
/** Sets how far a curved surface may stray from its micropolygons, in pixels; default 0.5. Code 10
    below 1e-10. */
ZEB_API void zebFlatness(float flatness);
/** Sets which way normals point (ZEB_OUTSIDE ...). Code 10 for any other number. */
ZEB_API void zebOrientation(short orientation);
/** Sets how many sides surfaces have: 2 (default), or 1 to drop those that face away. */
ZEB_API void zebBackface(short sides);
/** Names what follows in messages raised while it renders. */
ZEB_API void zebObjectName(const char* name);
/** Names the shading group of what follows, for messages. */
ZEB_API void zebGroupName(const char* name);
/** Chooses the spline basis (ZEB_BASIS_...) for u, v or both (ZEB_APPLY_...). Code 10 for any other
    number. */
ZEB_API void zebBasis(short basis, short application);
/** Sets a spline basis of the host's own and its step in control points, 1 or more. Code 10 for an
    unknown application or a step below 1. */
ZEB_API void zebCustomBasis(short application, ZebMatrix basis, long step);
/** @} */

/** @name Transformations
 * Legal everywhere but in an object block (code 6). Each acts in the current coordinate system:
 * the transformation given last is applied to points first. */
/** @{ */

/** Saves the transformation. */
ZEB_API void zebMatrixPush(void);
/** Restores the transformation. */
ZEB_API void zebMatrixPop(void);
/** Makes the current coordinate system camera space. */
ZEB_API void zebLoadIdentity(void);
/** Makes the current coordinate system one that the matrix takes to world space. */
ZEB_API void zebLoadMatrix(ZebMatrix matrix);
/** Applies a matrix. */
ZEB_API void zebMultMatrix(ZebMatrix matrix);
/** Applies a perspective of the given field of view. */
ZEB_API void zebPerspective(float fov);
/** Moves the origin. */
ZEB_API void zebTranslate(float x, float y, float z);
/** Rotates about an axis, right-handed in angle from x to y about +z. Code 15 for a zero axis. */
ZEB_API void zebRotate(float angle, float x, float y, float z);
/** Scales along the axes. */
ZEB_API void zebScale(float x, float y, float z);
/** Shears so that the direction (dx1, dy1, dz1) turns by the angle towards (dx2, dy2, dz2). Code 15
    for zero or parallel directions, 10 if the angle reaches the second direction. */
ZEB_API void zebSkew(float angle, float dx1, float dy1, float dz1, float dx2, float dy2, float dz2);
/** @} */

/** @name Coordinate spaces
 * Legal everywhere but in object and motion blocks (code 8). */
/** @{ */

/** Gives the current coordinate system a name. Code 10 for the five built-in ones. */
ZEB_API void zebMarkSpace(unsigned short space);
/**
 * Converts points between spaces, in place.
 *
 * @param from,to  tokens of raster, image, eye, world, model or a marked space
 * @param n        number of points, 0 or more
 * @param points   n points
 * @return points, or null: code 10 for an unknown space, 15 for a singular matrix
 */
ZEB_API ZebPoint* zebProjectPoints(unsigned short from, unsigned short to, long n,
                                   ZebPoint* points);
/** @} */

/** @name Polygons
 * Legal in a world block and everything nested in it; elsewhere code 7. Each needs "point", three
 * floats a vertex: code 13 without, 11 with more than one. Primitive variables: uniform one value a
 * face, varying and vertex one a vertex. Vertices run counter-clockwise seen from outside in a
 * right-handed object space. */
/** @{ */

/** Adds a planar convex polygon. @param nvertices 3 or more */
ZEB_API void zebPolygon(long nvertices, ...);
/** zebPolygon with the parameter list as arrays. */
ZEB_API void zebPolygonV(long nvertices, long n, const unsigned short* tokens, void* const* values);
/** Adds a planar polygon, concave or with holes.
    @param nloops 1 or more; the first is the outline, the others are holes
    @param nvertices vertices of each loop, 3 or more; the points follow loop by loop */
ZEB_API void zebGeneralPolygon(long nloops, const long* nvertices, ...);
/** zebGeneralPolygon with the parameter list as arrays. */
ZEB_API void zebGeneralPolygonV(long nloops, const long* nvertices, long n,
                                const unsigned short* tokens, void* const* values);
/** Adds convex polygons that share vertices.
    @param npolys 1 or more
    @param nvertices vertices of each face, 3 or more
    @param vertices indices into the points, face by face, from 0 */
ZEB_API void zebPolygonMesh(long npolys, const long* nvertices, const long* vertices, ...);
/** zebPolygonMesh with the parameter list as arrays. */
ZEB_API void zebPolygonMeshV(long npolys, const long* nvertices, const long* vertices, long n,
                             const unsigned short* tokens, void* const* values);
/** Adds general polygons that share vertices.
    @param npolys 1 or more
    @param nloops loops of each face
    @param nvertices vertices of each loop of all faces
    @param vertices indices into the points, loop by loop, from 0 */
ZEB_API void zebGeneralPolygonMesh(long npolys, const long* nloops, const long* nvertices,
                                   const long* vertices, ...);
/** zebGeneralPolygonMesh with the parameter list as arrays. */
ZEB_API void zebGeneralPolygonMeshV(long npolys, const long* nloops, const long* nvertices,
                                    const long* vertices, long n, const unsigned short* tokens,
                                    void* const* values);
/** @} */

/** @name Patches and NURBS
 * Legal where polygons are; elsewhere code 7. Control points come row by row, u running fastest.
 *
 * Positions are given by exactly one of
 *
 * | name     | floats a control point | |
 * |----------|---|---|
 * | "point"  | 3 | x, y, z |
 * | "height" | 1 | control point (i, j) of nu x nv lies at x = i / (nu - 1), y = j / (nv - 1) |
 * | "pointw" | 4 | w x, w y, w z, w; NURBS only |
 *
 * Code 13 without, 11 with more than one. Other primitive variables: uniform one value, for the
 * whole surface or mesh; varying four, at its corners (u, v) = (0, 0), (1, 0), (0, 1), (1, 1),
 * interpolated bilinearly; vertex one a control point, interpolated as the points are, on rational
 * surfaces by their weights too: "vertexcolor" and "vertexopacity" are colours of this kind.
 * Normals are those of the surface, dP/du x dP/dv, if none are given. */
/** @{ */

/**
 * Adds a single patch.
 *
 * @param type  ZEB_BILINEAR: 2 x 2 points, the patch's corners. ZEB_BICUBIC: 4 x 4 points, in the
 *              bases of the attributes (zebBasis, zebCustomBasis).
 *
 * Code 10 for any other number: "type must be bilinear or bicubic".
 */
ZEB_API void zebPatch(short type, ...);
/** zebPatch with the parameter list as arrays. */
ZEB_API void zebPatchV(short type, long n, const unsigned short* tokens, void* const* values);
/**
 * Adds patches that share control points.
 *
 * | type         | wrap            | patches in u |
 * |--------------|-----------------|---|
 * | ZEB_BILINEAR | ZEB_NONPERIODIC | nu - 1 |
 * | ZEB_BILINEAR | ZEB_PERIODIC    | nu |
 * | ZEB_BICUBIC  | ZEB_NONPERIODIC | (nu - 4) / step + 1 |
 * | ZEB_BICUBIC  | ZEB_PERIODIC    | nu / step |
 *
 * and the same in v. The step is that of the basis. Control points that a division leaves over take
 * no part: code 10, "extra control points in u will be ignored", and the mesh is still added.
 *
 * @param type         ZEB_BILINEAR or ZEB_BICUBIC; else code 10, "unknown patch type %ld"
 * @param nu,nv        control points in u and v, enough for one patch; else code 10
 * @param uwrap,vwrap  ZEB_PERIODIC or ZEB_NONPERIODIC; else code 10, "unknown wrap treatment %ld"
 */
ZEB_API void zebPatchMesh(short type, long nu, short uwrap, long nv, short vwrap, ...);
/** zebPatchMesh with the parameter list as arrays. */
ZEB_API void zebPatchMeshV(short type, long nu, short uwrap, long nv, short vwrap, long n,
                           const unsigned short* tokens, void* const* values);
/** Adds a rational B-spline surface of one span: its orders are its counts, nu and nv, so it has
    2 nu and 2 nv knots. Everything else is as with zebNurbMesh. */
ZEB_API void zebNurb(long nu, const float* uknot, float umin, float umax, long nv,
                     const float* vknot, float vmin, float vmax, ...);
/** zebNurb with the parameter list as arrays. */
ZEB_API void zebNurbV(long nu, const float* uknot, float umin, float umax, long nv,
                      const float* vknot, float vmin, float vmax, long n,
                      const unsigned short* tokens, void* const* values);
/**
 * Adds a rational B-spline surface, non-uniform as its knots are. "point" and "height" give every
 * control point the weight 1.
 *
 * @param nu,nv          control points in u and v
 * @param uorder,vorder  degree plus 1: 2 to 20; else code 10
 * @param uknot,vknot    nu + uorder and nv + vorder knots
 * @param umin,umax      the part of the knots' range to show: between uknot[uorder-1] and uknot[nu]
 * @param vmin,vmax      the same in v
 *
 * Code 10, and no surface: "number of control points may not be less than the order", "parametric
 * limit min must be less than max". Code 10, and the surface is added all the same: "knot values
 * must appear in non-decreasing order", "parametric limits must lie between knot[order-1] and
 * knot[n]"; it ends where the knots' range does.
 */
ZEB_API void zebNurbMesh(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                         long vorder, const float* vknot, float vmin, float vmax, ...);
/** zebNurbMesh with the parameter list as arrays. */
ZEB_API void zebNurbMeshV(long nu, long uorder, const float* uknot, float umin, float umax, long nv,
                          long vorder, const float* vknot, float vmin, float vmax, long n,
                          const unsigned short* tokens, void* const* values);
/** @} */

/** @name Quadrics
 * Legal where polygons are; elsewhere code 7. Each is a curve that turns about the z axis, in the
 * direction from +x to +y, by thetamax degrees, clamped to -360 ... 360. The parameter u runs along
 * that turn, v along the curve. Lengths are in object space. Code 10 for a measure that is not
 * finite; the surface is not added.
 *
 * No parameters are required. Primitive variables: uniform one value; varying and vertex four, at
 * the corners (u, v) = (0, 0), (1, 0), (0, 1), (1, 1), interpolated bilinearly. */
/** @{ */

/** Adds a sphere about the origin, or the part of it from zmin to zmax. -radius and radius or
    anything beyond show it whole. */
ZEB_API void zebSphere(float radius, float zmin, float zmax, float thetamax, ...);
/** zebSphere with the parameter list as arrays. */
ZEB_API void zebSphereV(float radius, float zmin, float zmax, float thetamax, long n,
                        const unsigned short* tokens, void* const* values);
/** Adds the side of a cone that stands on the xy plane with its tip at z = height. It shows from
    z = 0 up to cutheight, which is clamped to 0 ... height: cutheight = height shows it whole. A
    cone of negative height is never cut. */
ZEB_API void zebCone(float radius, float height, float cutheight, float thetamax, ...);
/** zebCone with the parameter list as arrays. */
ZEB_API void zebConeV(float radius, float height, float cutheight, float thetamax, long n,
                      const unsigned short* tokens, void* const* values);
/** Adds the side of a cylinder from zmin to zmax, without end caps. */
ZEB_API void zebCylinder(float radius, float zmin, float zmax, float thetamax, ...);
/** zebCylinder with the parameter list as arrays. */
ZEB_API void zebCylinderV(float radius, float zmin, float zmax, float thetamax, long n,
                          const unsigned short* tokens, void* const* values);
/** Adds the surface that the straight line between two points (x, y, z each) sweeps. Code 10 for a
    null pointer. */
ZEB_API void zebHyperboloid(const float* point1, const float* point2, float thetamax, ...);
/** zebHyperboloid with the parameter list as arrays. */
ZEB_API void zebHyperboloidV(const float* point1, const float* point2, float thetamax, long n,
                             const unsigned short* tokens, void* const* values);
/** Adds a paraboloid with its tip at the origin and the radius rmax at z = zmax, or the part of it
    from zmin on. Code 10: "zmax may not equal 0"; "paraboloid may not cross z plane, use two" if
    zmin and zmax lie on different sides. */
ZEB_API void zebParaboloid(float rmax, float zmin, float zmax, float thetamax, ...);
/** zebParaboloid with the parameter list as arrays. */
ZEB_API void zebParaboloidV(float rmax, float zmin, float zmax, float thetamax, long n,
                            const unsigned short* tokens, void* const* values);
/** Adds a disk in the xy plane about the origin, or a ring: innerradius, clamped to 0 ... radius,
    is that of the hole. v runs inwards. */
ZEB_API void zebDisk(float innerradius, float radius, float thetamax, ...);
/** zebDisk with the parameter list as arrays. */
ZEB_API void zebDiskV(float innerradius, float radius, float thetamax, long n,
                      const unsigned short* tokens, void* const* values);
/** Adds a torus about the z axis. majorradius reaches from the axis to the middle of the tube,
    minorradius is that of the tube. The tube's circle shows from phimin to phimax, in degrees from
    the outermost point towards +z, at most a full turn. */
ZEB_API void zebTorus(float majorradius, float minorradius, float phimin, float phimax,
                      float thetamax, ...);
/** zebTorus with the parameter list as arrays. */
ZEB_API void zebTorusV(float majorradius, float minorradius, float phimin, float phimax,
                       float thetamax, long n, const unsigned short* tokens, void* const* values);
/** @} */

/** @name Procedurals, objects and motion */
/** @{ */

/**
 * Adds geometry that is built only if and when its bound can be seen.
 *
 * @param data       handed to both functions
 * @param bound      xmin, xmax, ymin, ymax, zmin, zmax in object space; what subdivide builds must
 *                   lie in it
 * @param subdivide  makes interface calls under the attributes and transformation in force here
 * @param free       called exactly once, whatever becomes of the procedural, also if this call is
 *                   refused; may be null
 *
 * Legal in a world block and what nests in it, but not in a motion block; elsewhere code 7.
 */
ZEB_API void zebProcedural(void* data, const float* bound, ZebSubdivideFunction subdivide,
                           ZebFreeFunction free);
/** Opens the definition of an object: primitives, all of one kind (code 11), are kept instead of
    drawn. @return its handle, good until the frame or world block ends; null if refused. Legal
    everywhere but in object and motion blocks; elsewhere code 8. */
ZEB_API const void* zebObjectBegin(void);
/** Closes the definition. Legal in an object block; elsewhere code 4. */
ZEB_API void zebObjectEnd(void);
/** Draws an object under the current attributes, spline bases among them, and transformation. By
    default all instances share those of the last call (zebQuirks). Legal in a world block and what
    nests in it, but not in object and motion blocks; elsewhere code 7. Code 10 for a dead handle.
 */
ZEB_API void zebObjectCall(const void* object);
/** @} */

/** @name Errors */
/** @{ */

/** Makes a built-in handler (ZEB_ERROR_...) the one for the severities of a mask (0xB00 and any sum
    of their low bits). Code 10 for other numbers. Legal anywhere; kept by zebReset. */
ZEB_API void zebErrorHandler(short mask, short kind);
/** Makes a function of the host the handler for the severities of a mask. A null one ignores.
    Code 10 for an unknown mask. Legal anywhere; kept by zebReset. */
ZEB_API void zebCustomErrorHandler(short mask, ZebErrorFunction handler);
/** @return the code of the last report that reached a built-in handler; 0 before the first. */
ZEB_API long zebLastError(void);
/** Does nothing with a comment. */
ZEB_API void zebComment(const char* text);
/** @} */

#ifdef __cplusplus
} /* extern "C" */
#endif

/** @name Functions under decorated names */
/** @{ */

/** Returns everything to the state at the start; a picture being rendered is given up. Error
    handlers, tokens and marked spaces stay. Legal anywhere, but from inside a callback: code 8. */
ZEB_API void zebReset(void) ZEB_DECORATED("_Z8zebResetv");
/** Sends the lines of printed reports to a function of the host; null drops them. By default they
    go to the message console, a window "ZEB Messages", if the picture goes to a window and there is
   a screen; otherwise to standard error. Legal anywhere; kept by zebReset. */
ZEB_API void zebErrorPrinter(ZebPrintFunction printer) ZEB_DECORATED("_Z15zebErrorPrinterPFvPKcE");
/** Begins to render the world block in stages: zebRenderInit, then zebRenderBucket until it returns
    0, then zebSceneEnd. Primitives added on the way show in the bucket under way and right of it,
   in its row and the rows below. A single thread renders, whatever zebThreads says; to be asked
   whether to go on while all of them do, see zebProgressCallback. From inside a callback: code 8.
 */
ZEB_API void zebRenderInit(void) ZEB_DECORATED("_Z13zebRenderInitv");
/** Renders the next bucket. From inside a callback: code 8. @return non-zero while buckets remain
 */
ZEB_API short zebRenderBucket(void) ZEB_DECORATED("_Z15zebRenderBucketv");
/** @return how much is rendered, in percent, the bucket under way included; 0 when nothing is being
    rendered */
ZEB_API long zebProgress(void) ZEB_DECORATED("_Z11zebProgressv");
/** Sets how far the function of zebCustomDisplacement moves a surface at the most, an attribute: in
    object space; 0 by default, and so are negative ones. Larger than it need be costs time:
   surfaces are looked for as far around them. Legal as zebColor is. Code 10 for what is not finite.
 */
ZEB_API void zebBoundDisplacement(float amount) ZEB_DECORATED("_Z20zebBoundDisplacementf");
/** Opens a motion block: of the calls in it only the first takes effect.
    @param n number of times, which follow; they are not used. Legal everywhere but in object and
    motion blocks; elsewhere code 8. */
ZEB_API void zebMotionBegin(long n, ...) ZEB_DECORATED("_Z14zebMotionBeginlz");
/** zebMotionBegin with the times as an array. */
ZEB_API void zebMotionBeginV(long n, float* times) ZEB_DECORATED("_Z15zebMotionBeginVlPf");
/** Closes the motion block. Elsewhere code 4. */
ZEB_API void zebMotionEnd(void) ZEB_DECORATED("_Z12zebMotionEndv");
/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/** @name Extensions */
/** @{ */

/**
 * A device of the host's own: it receives the picture. Null members are skipped.
 *
 * span delivers the pixels x0 ... x1 of row y: for each, the words of the output samples in the
 * order red, green, blue, alpha, depth; each word an integer, or the bits of a float where the
 * quantization's "one" is 0. Colours are multiplied by alpha, and gamma is applied to the product;
 * alpha and depth have no gamma. flush says that rows y0 ... y1 are final. Spans of a row may come
 * in several pieces.
 */
typedef struct ZebDisplay {
    void* data; /**< the first argument of every call */
    /** The world block opens: the picture's size and origin. */
    void (*open)(void* data, const char* name, long xres, long yres, long xorigin, long yorigin);
    /** Pixels x0 ... x1 of row y. */
    void (*span)(void* data, long x0, long x1, long y, const unsigned int* words);
    /** Rows y0 ... y1 are final. */
    void (*flush)(void* data, long y0, long y1);
    /** The picture is whole, or given up. */
    void (*close)(void* data);
} ZebDisplay;

/** Sends the picture to a device of the host's own; an option. The struct is copied; null brings
    the window back, under the name given last. The last of zebOutputDisplay, zebOutputFile and
    zebCustomDisplay counts. */
ZEB_API void zebCustomDisplay(const ZebDisplay* device);
/** Interns a name with a class (ZEB_UNIFORM ...) and a type (ZEB_FLOAT ...), so that it can carry
    values on primitives. A name that exists keeps its own. Code 10 for other numbers.
    @return the token, 0 if refused. Legal anywhere. */
ZEB_API unsigned short zebDeclare(const char* name, short storage, short type);
/**
 * Says of an array that the next call is given how many elements it holds, and how far apart they
 * lie: for wrappers, which can refuse arrays that are too short, and for arrays of structs, whose
 * members then need no copy. One call for each such array; the others are read as ever.
 * @param array as the next call is given it
 * @param count its elements. Of a variable in a parameter list one is a value of its type (of
 *   "point" three floats, of "color" as many as the colour space has samples), of the centers of
 *   zebSpheres and the points of zebProjectPoints three floats; of all other arrays a number
 * @param stride bytes from the start of one element to that of the next; 0 if they touch, as lists
 *   of tokens and values and the points of zebProjectPoints must
 *
 * Whatever is called next forgets it, but for zebArray itself, zebQuark, zebDeclare, zebComment,
 * zebCancel, zebLastError and zebVersion. The function that reads the array reports code 11 with
 * both numbers if it is too short, and does nothing else then.
 * Legal anywhere. Code 10 for null and a negative count.
 */
ZEB_API void zebArray(const void* array, long count, long stride);
/** Keeps (non-zero, the default) or mends some odd ways; an option.
    Mended: each instance of an object has its own attributes, transformation and order; a patch
    in an object keeps its points; filters wider than 2 pixels show no seams; an unset spot cone is
    30 and 5 degrees; where 8 bits are shown, words with a "one" above 255 are scaled and not cut;
    surfaces are weighed by their opacity once and not twice, and opacities end at 0 and 1; float
    words of colours and alpha pass as they were computed, below 0 and above 1 too; the projection
    is one of the options that are back after a frame. */
ZEB_API void zebQuirks(short on);
/** Non-zero makes the depth of a pixel the least depth among the samples inside the pixel's own
    square, instead of the filtered mean; an option. Default 0. A filter narrower than the pixel
    narrows the square too; if no sample lies inside, the one next to the pixel's centre counts. */
ZEB_API void zebDepthNearest(short on);
/**
 * Makes a camera: what is given after it is seen from the eye, looking at a place. Applied like the
 * other transformations, and usually the first of them.
 *
 * Camera space is left-handed: x to the right, y up, z forwards. The place lies on its z axis, the
 * way up in the half of its y-z plane where y is positive.
 * @param eye three floats: the camera's place
 * @param at three floats: the place looked at
 * @param up three floats: a direction, of any length
 *
 * Legal wherever transformations are; elsewhere code 6. Code 10 for null or what is not finite,
 * code 15 if the eye is at the place, or if up is 0 or leads straight towards or away from it.
 */
ZEB_API void zebLookAt(const float* eye, const float* at, const float* up);
/**
 * Makes many whole spheres at once, as for the points of a plot. Each is a primitive like those of
 * zebSphere, whose rules hold here too.
 * @param n how many; 0 makes none
 * @param centers 3 n floats
 * @param radii n floats
 *
 * Of every variable in the parameter list each sphere takes one value: "color" and "opacity" have
 * 3 n floats. Code 10 for null, what is not finite, a negative n and one above 2^27.
 */
ZEB_API void zebSpheres(long n, const float* centers, const float* radii, ...);
/** zebSpheres with the parameter list as arrays. */
ZEB_API void zebSpheresV(long n, const float* centers, const float* radii, long nargs,
                         const unsigned short* tokens, void* const* values);
/**
 * Gives up the picture of the world block that is open, at the next bucket, split or row of
 * samples. The device is closed then, a picture's file does not appear, and the world block ends in
 * order; an info with code 0 says so. Without an open world block nothing happens.
 *
 * Legal anywhere and at any time: in callbacks, in signal handlers, and on other threads while a
 * call renders.
 */
ZEB_API void zebCancel(void);
/** Hears how far a picture is: in percent, after each bucket that makes a difference, the last time
    100. @return non-zero to give the picture up, as zebCancel does */
typedef short (*ZebProgressFunction)(void* data, long percent);
/** Calls a function of the host's while a picture is rendered; an option.
    @param function null is none, the default
    @param data its first argument */
ZEB_API void zebProgressCallback(ZebProgressFunction function, void* data);
/** Sets how many threads render; an option. Pictures are the same for any number, and the host's
    code (callbacks) runs on the caller's thread only.
    @param n 1 (default) is the caller's alone, 2 to 256 are so many together with it; 0 is one per
    core the process may use (affinity and limits of control groups counted), up to 256. Code 10 for
    any other. */
ZEB_API void zebThreads(long n);
/** Handles the events of the library's windows: they repaint, and close when their user wants it.
    While it renders, the library does so by itself; before and after, a host calls this from time
   to time, or until it returns 0. Windows outlive the world that opened them. A host that has
   windows of the same window system (FLTK on Linux) gets its own events handled here too, on
   Windows only while it waits. What handles them while the library renders is a callback: zebReset
   and rendering are refused there with code 8.
    @param wait non-zero waits for an event, if a window is open
    @return how many windows with pictures are open; 0 also if the process is told to end (WM_QUIT,
    which stays for the host's own loop). Legal anywhere. */
ZEB_API short zebWindowEvents(short wait);
/** @return the library's version, 10000 * major + 100 * minor + patch. Legal anywhere. */
ZEB_API long zebVersion(void);
/** @} */

/** @name Shading by the host
 *
 * Functions of the host's own take the place of built-in surfaces, atmospheres and lights. Each is
 * called for whole rows of points: all points of a small piece of a surface that are to be shaded,
 * a few or some hundreds, by planes. Plane P[0] holds the x of all points, P[1] the y, P[2] the z;
 * element k of every plane belongs to point k. All is in camera space: the eye looks along +z.
 * Pieces that nothing is seen of are not shaded; which points come together, and in which order, is
 * the library's affair, but the same in every run.
 *
 * While one of them runs, the functions that take a row are at its service. All other calls, but
 * for zebCancel and zebVersion, are refused with code 8. A function must come back by returning: no
 * jump, no exception may leave it. What it writes beyond its planes can't be caught. */
/** @{ */

/** The function may be called on any thread, and on several at a time. Without it, it is called on
    the caller's thread only, row by row in the order that one thread alone takes: pictures that
   need it gain little from zebThreads. */
#define ZEB_SHADE_ANYWHERE 1
/** Of surfaces: the function sets Oi. It is called before it is known what hides what, also for
    pieces of which nothing is seen in the end. Without it, Oi is what Os is. */
#define ZEB_SHADE_OPACITY 2
/** Of lights: the light comes from everywhere. It adds to what zebRowAmbient finds, and L is not
    read. */
#define ZEB_SHADE_AMBIENT 4

/** What zebRowTransform takes planes for. */
#define ZEB_TRANSFORM_POINT 0xF10  /**< places */
#define ZEB_TRANSFORM_VECTOR 0xF11 /**< ways from place to place */
#define ZEB_TRANSFORM_NORMAL 0xF12 /**< normals; their length is not kept */

/** What lies beyond the edges of an image (zebImage). */
#define ZEB_IMAGE_CLAMP 0xF00  /**< the pixels at the edge */
#define ZEB_IMAGE_REPEAT 0xF01 /**< the image again */
#define ZEB_IMAGE_MIRROR 0xF02 /**< the image mirrored */
#define ZEB_IMAGE_BLACK 0xF03  /**< nothing: 0 in all channels */

/**
 * Points that are shaded together. The planes are the function's own while it runs: they do not
 * overlap, begin at multiples of 64 bytes, and hold count elements and as many more as make a
 * multiple of 16, which repeat the last point and whose results are not read.
 * Lights and atmospheres see what a surface has written into its planes by then.
 */
typedef struct ZebRow {
    long count;     /**< the number of points */
    float* P[3];    /**< positions; of displacements: to be moved */
    float* N[3];    /**< shading normals, of any length, turned neither way */
    float* Ng[3];   /**< geometric normals, of any length */
    float* I[3];    /**< from the eye to the point; along z in an orthographic view */
    float* dPdu[3]; /**< derivatives of P; those of polygons lie along two sides of a part of one */
    float* dPdv[3]; /**< the other */
    float* u;       /**< parameters: 0 to 1 over a curved surface, a patch mesh or a NURBS mesh; of
                         polygons, x in object space */
    float* v;       /**< the other; of polygons, y */
    float* s;       /**< texture coordinates: variables "s" and "t" of the primitive (ZEB_VARYING,
                         ZEB_FLOAT) if it has them; or else what zebTextureCoordinates makes of u
                         and v */
    float* t;       /**< the other */
    float* du;      /**< how far u is from one point to its neighbours */
    float* dv;      /**< the same of v */
    float* Cs[3];   /**< colours of the surface */
    float* Os[3];   /**< opacities of the surface */
    float* Ci[3];   /**< of surfaces: to be set, the colour that leaves the surface, weighed by its
                         opacity as built-in surfaces do: Os * Cs * ... (zebQuirks). Of atmospheres:
                         to be changed. Of others: null */
    float* Oi[3];   /**< of surfaces: to be set if ZEB_SHADE_OPACITY says so; Os before. Of
                         atmospheres: the surface's, to be read. Of others: null */
    float* L[3];    /**< of lights: to be set, from the light to the point, of any length; null
                         otherwise */
    float* Cl[3];   /**< of lights: to be set, the colour that arrives; black is no light; null
                         otherwise */
    float* Ol[3];   /**< of lights: may be set, for surfaces that ask; white before; null
                         otherwise */
} ZebRow;

/** Shades a row. */
typedef void (*ZebShadeFunction)(void* data, ZebRow* row);

/** A function that shades, and what belongs to it. */
typedef struct ZebShader {
    void* data;             /**< handed to both functions */
    ZebShadeFunction shade; /**< shades */
    ZebFreeFunction free;   /**< called exactly once, on the caller's thread, when a call ends after
                                 which nothing uses the shader any more; may be null. A call that is
                                 refused frees it as well. zebReset lets go of all that is in force
                                 outside of blocks. */
    long flags;             /**< the sum of some of ZEB_SHADE_... */
} ZebShader;

/**
 * Makes a function of the host's the surface; an attribute, in place of zebSurface. The struct is
 * copied.
 *
 * Colours that are not numbers become black, opacities that are not numbers 1; one report with code
 * 15 says so for all of them. Legal as zebSurface is. Code 10 for null, a null function, and flags
 * there are none of.
 */
ZEB_API void zebCustomSurface(const ZebShader* shader);
/** Makes a function of the host's the atmosphere; an attribute, in place of zebAtmosphere. A null
    shader is no atmosphere. Otherwise as zebCustomSurface. */
ZEB_API void zebCustomAtmosphere(const ZebShader* shader);
/**
 * Adds a light that shines as a function of the host's says, and switches it on.
 * @return its handle, as that of zebLightSource; null if refused
 *
 * It is called once for each row, when light is first asked for. N in its row is the surface's
 * shading normal. It can't ask for the light of others (code 8). Built-in surfaces take its light
 * as they take that of others: from the side that their normal, turned to the eye, is on. Light
 * that is not a number is none, with one report for each function. Legal as zebLightSource is.
 */
ZEB_API const void* zebCustomLight(const ZebShader* shader);

/**
 * Makes a function of the host's move the surface before it is seen; an attribute. A null shader
 * moves nothing.
 *
 * It moves P of its row; there is no Ci, Oi, nor light (code 8). All that is found of the surface
 * later is that of the moved one: normals are too, those given as "normal" as far as the surface
 * has turned. No point is moved farther than zebBoundDisplacement says, which has to be set:
 * farther is cut to it, the same way, with one report with code 10 for each function. Points that
 * are no numbers stay, with one report with code 15; so do, without one, points that would come to
 * lie behind the eye. What is behind the eye before it is moved does not show.
 *
 * The surface stays closed where its grids meet, whatever the function does, as long as that
 * depends on the point alone: on P, the direction of N (its length is that of a part of the
 * surface), u, v, s, t and variables, which both grids give alike, not on count, a point's number,
 * nor on what else is in the row. At u = 0 and 1 of a surface that closes,
 * P and N are the same. Faces of a mesh stay together if N does not matter, or if they have
 * "normal" in common. A row has points beyond the surface's edges too, with u and v as they would
 * go on. du and dv are how far places are apart that are a micropolygon apart on the screen;
 * zebRowDifferences tells how much values change as far.
 *
 * How fine the surface is diced follows from what it is before; where that is out of sight, from
 * what it would be as far from the eye as the bound. Where grids meet, vertices of the finer one
 * may lie on the straight line between two others, a micropolygon apart. Legal as zebColor is. Code
 * 10 for a null function, and flags there are none of; ZEB_SHADE_OPACITY and ZEB_SHADE_AMBIENT are
 * without effect.
 */
ZEB_API void zebCustomDisplacement(const ZebShader* shader);

/** Sets the texture coordinates at the corners of a surface's parameters, an attribute: s and t at
    (u, v) = (0, 0), (1, 0), (0, 1) and (1, 1), bilinear between and beyond. By default s is u and t
    is v. Functions that shade read them. Legal as zebColor is. Code 10 for what is not finite. */
ZEB_API void zebTextureCoordinates(float s1, float t1, float s2, float t2, float s3, float t3,
                                   float s4, float t4);

/** @return a plane more, for the function's own ends, until it returns; its values are 0. Null and
    code 8 for a row that is not being shaded on this thread: so do all functions that take one. The
    planes they take are those of the row and such ones; others are refused with code 10. */
ZEB_API float* zebRowPlane(const ZebRow* row);
/**
 * Finds the values that a variable of the primitive (zebDeclare) has at the points: uniform,
 * varying or, interpolated as the control points are, of class ZEB_VERTEX (but homogeneous ones):
 * in camera space if they are points or normals, homogeneous ones as they were given.
 * @param row as the function was given it
 * @param token the variable's
 * @param component of a value: 0 of floats, 0 to 2 of points and colours, 0 and 1 of pairs, 0 to 3
 *   of homogeneous points
 * @return a plane; null if the primitive has no such variable of one of these types
 */
ZEB_API float* zebRowVariable(const ZebRow* row, unsigned short token, long component);
/** @return where the integer of a variable lies; null if the primitive has none of class
 * ZEB_UNIFORM */
ZEB_API const int* zebRowInteger(const ZebRow* row, unsigned short token);
/** @return the text of a variable; null if the primitive has none */
ZEB_API const char* zebRowString(const ZebRow* row, unsigned short token);
/** Finds the light that comes from everywhere.
    @param row as the function was given it, as in all that follow
    @param result three planes, set */
ZEB_API void zebRowAmbient(const ZebRow* row, float* const* result);
/**
 * Finds how much light a rough surface takes: the sum of Cl times the cosine between its normal and
 * the way to the light, over all lights on its side.
 * @param row see above
 * @param N three planes, of any length; usually N turned to the eye (zebRowFacing)
 * @param result three planes, set; they may be those of N
 */
ZEB_API void zebRowDiffuse(const ZebRow* row, float* const* N, float* const* result);
/**
 * Finds highlights: the sum of Cl times the cosine between the normal and the halfway vector, to
 * the power 1 / roughness (J. Blinn, 1977).
 * @param row see above
 * @param N three planes, as for zebRowDiffuse
 * @param V three planes: from the point to the eye, of any length; usually -I
 * @param roughness 0.1 is that of "plastic"
 * @param result three planes, set; they may be those of N
 */
ZEB_API void zebRowSpecular(const ZebRow* row, float* const* N, float* const* V, float roughness,
                            float* const* result);
/** Finds highlights about the mirror direction: the cosine to the power size (B. T. Phong, 1975).
 */
ZEB_API void zebRowPhong(const ZebRow* row, float* const* N, float* const* V, float size,
                         float* const* result);
/** @return how many lights are in force that do not come from everywhere */
ZEB_API long zebRowLights(const ZebRow* row);
/**
 * Finds what one of them sends to the points, whatever side it is on.
 * @param row see above
 * @param number 0 to zebRowLights - 1; the one made last comes first
 * @param L three planes, set: from the point to the light, of length 1
 * @param Cl three planes, set: its colour there; black where it does not reach
 * @param Ol three planes, set: its opacity; may be null
 * @return non-zero; 0 for another number, and nothing is set
 */
ZEB_API short zebRowLight(const ZebRow* row, long number, float* const* L, float* const* Cl,
                          float* const* Ol);
/** Turns normals to the eye: to unit length and, where the geometric normal points away, round.
    @param row see above
    @param N three planes
    @param result three planes, set; they may be those of N */
ZEB_API void zebRowFacing(const ZebRow* row, float* const* N, float* const* result);
/**
 * Finds how much values change from a point to the next, along the two ways that points are laid
 * out in: half the difference of the neighbours before and after; at an end, that to the only one.
 * @param row see above
 * @param values a plane
 * @param along1,along2 planes, set; not the same as values
 */
ZEB_API void zebRowDifferences(const ZebRow* row, const float* values, float* along1,
                               float* along2);
/** Finds normals of positions moved by the function, from their differences, on the side that Ng
    is on.
    @param row see above
    @param positions,result three planes each; not the same */
ZEB_API void zebRowNormals(const ZebRow* row, float* const* positions, float* const* result);
/**
 * Brings points from one space to another.
 * @param row see above
 * @param from,to 0: the space in which the shader was made. Otherwise a token: "eye", which is
 * camera space, "world", "model", which is the primitive's object space, and marked spaces, as they
 * were when the shader was made
 * @param kind ZEB_TRANSFORM_...
 * @param points,result three planes each; may be the same
 *
 * Code 10 for an unknown space and kind, and for "raster" and "image"; code 15 for a space that has
 * no way back. Then the result is not set.
 */
ZEB_API void zebRowTransform(const ZebRow* row, unsigned short from, unsigned short to, short kind,
                             float* const* points, float* const* result);
/**
 * Finds noise: random, but smooth, and always the same at a place. It is 0 where all coordinates
 * are whole numbers, within -1 to 1 between, and changes about once a unit (K. Perlin, 2002).
 * @param row see above
 * @param dimensions 1 to 4; code 10 for others
 * @param places as many planes
 * @param periods as many whole numbers: noise repeats along coordinates whose period is above 0;
 *   null is none
 * @param result a plane, set
 */
ZEB_API void zebRowNoise(const ZebRow* row, long dimensions, float* const* places,
                         const long* periods, float* result);
/**
 * Adds octaves of noise up: of places, of twice their coordinates, of four times, and so on.
 * Octaves that would change too much from one point to the next fade out, so that nothing flickers.
 * @param row see above
 * @param dimensions,places as for zebRowNoise
 * @param octaves 1 to 32; code 10 for others
 * @param gain how much each octave has of the one before; usually 0.5
 * @param absolute non-zero adds the absolute values, which has creases, as in marble and fire
 * @param result a plane, set
 */
ZEB_API void zebRowTurbulence(const ZebRow* row, long dimensions, float* const* places,
                              long octaves, float gain, short absolute, float* result);
/** Finds a step: 0 where values are below the edge, 1 above, and in between as much as lies above
   it from one point to the next.
    @param row see above
    @param edge,values the edge and a plane of values
    @param result a plane, set; may be that of the values */
ZEB_API void zebRowStep(const ZebRow* row, float edge, const float* values, float* result);
/** Finds a checkerboard of fields one unit wide, averaged from one point to the next: 1 where the
    whole parts of s and t are both even or both odd, 0 elsewhere.
    @param row see above
    @param s,t planes
    @param result a plane, set; may be s or t */
ZEB_API void zebRowChecks(const ZebRow* row, const float* s, const float* t, float* result);
/**
 * Makes an image to look up, with smaller copies of it.
 * @param width,height in pixels, up to 2^20
 * @param channels 1 to 64
 * @param pixels width x height x channels numbers: row by row from the top, the channels of a pixel
 *   side by side; copied
 * @param wrap ZEB_IMAGE_...
 * @return its handle, good until zebImageFree; null if refused
 *
 * Legal anywhere. Code 10 for what is no image, and for pixels that are not finite.
 */
ZEB_API const void* zebImage(long width, long height, long channels, const float* pixels,
                             short wrap);
/** Lets an image go. Legal anywhere; code 10 for a dead handle. A picture under way that still asks
    for it gets nothing, with code 10. */
ZEB_API void zebImageFree(const void* image);
/**
 * Looks an image up: bilinear where it is magnified, from smaller copies where s and t change by
 * more than a pixel from one point to the next.
 * @param row see above
 * @param image its handle
 * @param s,t planes: the image covers 0 to 1 by 0 to 1, t runs downwards
 * @param blur added to how far s and t change, as a part of the image; usually 0
 * @param results as many planes as the image has channels, set
 */
ZEB_API void zebRowImage(const ZebRow* row, const void* image, const float* s, const float* t,
                         float blur, float* const* results);
/** @} */

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif
