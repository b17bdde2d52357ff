/* SPDX-License-Identifier: Apache-2.0 */
/**
 * Effects in plain C: what a module has that `qx` and other hosts of QX load and run on pictures. This file is all that
 * is needed to write one; nothing is linked. It is C99, and compiles as C11 and C++17 too.
 */
#ifndef QX_EFFECT_H
#define QX_EFFECT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct QXE_World QXE_World;
typedef struct QXE_InData QXE_InData;
typedef struct QXE_CallbackBlock QXE_CallbackBlock;
typedef struct QXE_BasicSuite QXE_BasicSuite;

/* ---- What an effect is ------------------------------------------------------------------------------
 *
 * An effect is a loadable module that exports one C function, QXE_DescribeEffect, and needs no library of the host:
 * all that it uses is handed to it. The host loads the module, asks for its description, and makes instances of it. For
 * an instance it calls `begin`, then `room` and `render` for any frames in any order, then `end`; calls of one instance
 * never overlap, those of two may, each on a thread of its own. What an effect makes of a frame depends on the source,
 * the values and the frame's number alone: instances share nothing that changes.
 *
 * Functions return 0, or a code: 4 for want of memory, 517 (QXE_INTERRUPTED) where an abort or progress function said
 * so, any other for a failure of their own, of which the host tells the code and the words of the last report. They
 * throw nothing and leave nothing running. Texts are UTF-8 and end with 0. Records that may grow begin with their size:
 * fields behind it are not there.
 */

#define QXE_VERSION_MAJOR 1
#define QXE_VERSION_MINOR 0

/** A host takes effects of its own major version, and of a minor one up to its own. */
typedef struct QXE_Version {
    uint16_t major, minor;
} QXE_Version;

/** What a parameter holds. */
enum QXE_ParameterKind {
    QXE_NUMBER = 0, /**< numbers[0], from `least` to `most`; may move from frame to frame */
    QXE_WHOLE = 1,  /**< whole, from `least` to `most` */
    QXE_SWITCH = 2, /**< whole, 0 or 1 */
    QXE_CHOICE = 3, /**< whole, an index of `choices` */
    QXE_POINT = 4,  /**< numbers[0] to the right and numbers[1] down, in pixels of the source; each as a number */
    QXE_COLOUR = 5, /**< numbers[0] to [3]: alpha, red, green, blue; 0 to 1 is the range of integer worlds */
    QXE_TEXT = 6    /**< text */
};

/** A parameter's value at a frame; what its kind does not name is 0. */
typedef struct QXE_Value {
    double numbers[4];
    const char* text; /**< stays for the call */
    int32_t whole;
} QXE_Value;

/** A parameter. `name` is what command lines and scenes say: letters a to z, digits and "-", a letter first. */
typedef struct QXE_ParameterInfo {
    uint32_t size; /**< of this record */
    int32_t kind;  /**< QXE_ParameterKind */
    const char* name;
    const char* help; /**< one line, without a full stop */
    double least, most;
    QXE_Value standard;         /**< the value where none is given; a null text is "" */
    const char* const* choices; /**< words that are spelled as names, null behind the last; else null */
} QXE_ParameterInfo;

/** One instance, from `begin` to `end`. */
typedef struct QXE_Instance {
    uint32_t size;
    int32_t depth;                      /**< of all its worlds: 8, 16 or 32 */
    const QXE_BasicSuite* basic;        /**< by which suites are had */
    const QXE_CallbackBlock* callbacks; /**< of the layer's quality, for straight alpha */
    int32_t rate_number, rate_per;      /**< frames a second, a fraction; 0 and 1 for a still picture */
    void* data;                         /**< the effect's own; null before `begin` */
} QXE_Instance;

/** One frame of an instance. */
typedef struct QXE_Frame {
    uint32_t size;
    uint32_t value_count;
    const QXE_Value* values; /**< in the order of the parameters */
    double number;           /**< of the frame, on the scene's own count */
    int32_t width, height;   /**< of the source */
    QXE_InData* in_data;     /**< for routines that ask and report through one, and to ask directly; on the thread of
                                  the call alone, but for what suites do with it themselves */
} QXE_Frame;

/** Pixels that a result has beyond each side of its source, none below 0. */
typedef struct QXE_Room {
    int32_t left, top, right, bottom;
} QXE_Room;

enum QXE_Depths { QXE_DEPTH8 = 1, QXE_DEPTH16 = 2, QXE_DEPTH32 = 4, QXE_ANY_DEPTH = 7 };

/** What QXE_DescribeEffect fills in. Whatever it points to stays until the module is unloaded. */
typedef struct QXE_EffectInfo {
    uint32_t size;       /**< set by the host */
    QXE_Version version; /**< of the header that the effect was written with */
    const char* name;    /**< spelled as names of parameters are */
    const char* label;   /**< for people */
    const char* about;   /**< what it does, in a line */
    uint32_t depths;     /**< QXE_Depths that `render` takes */
    uint32_t parameter_count;
    const QXE_ParameterInfo* parameters;

    /** May be null, as may `end`. Where `begin` fails, `end` is not called. */
    int32_t (*begin)(QXE_Instance* instance);
    void (*end)(QXE_Instance* instance);
    /** How much larger than its source the result of a frame is; `room` comes as 0. Null: not at all. */
    int32_t (*room)(QXE_Instance* instance, const QXE_Frame* frame, QXE_Room* room);
    /**
     * Makes a frame: writes every pixel of `destination`, which is as much larger than `source` as `room` said, so that
     * pixel (0, 0) of the source lies at (left, top). Colours are straight, and under alpha 0 are kept, not looked at.
     * Both are the library's worlds with rows of their own; the source is a copy that may be spoiled. An effect writes
     * in no other place, and writes all: what is left as it came counts as a failure where nothing was written.
     */
    int32_t (*render)(QXE_Instance* instance, const QXE_Frame* frame, QXE_World* source, QXE_World* destination);
} QXE_EffectInfo;

#if defined(_WIN32)
#define QXE_EXPORT __declspec(dllexport)
#else
#define QXE_EXPORT __attribute__((visibility("default")))
#endif

/**
 * The one function of a module, to be defined with QXE_EXPORT, in C++ with extern "C".
 * @param host  the version that the host knows
 * @param info  all 0 but for its size
 * @return 0; any other code refuses the host, which then tells it
 */
QXE_EXPORT int32_t QXE_DescribeEffect(QXE_Version host, QXE_EffectInfo* info);
typedef int32_t (*QXE_DescribeEffectFunc)(QXE_Version host, QXE_EffectInfo* info);

#ifdef __cplusplus
}
#endif

#endif
