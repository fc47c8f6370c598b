/* What the engine and its decoder plug-ins say to each other. Private to the two:
 * a plug-in of another version is refused. Plain C, so that no C++ type or
 * exception crosses from one library to the other. */
#ifndef KESTREL_ENGINE_PLUGIN_H
#define KESTREL_ENGINE_PLUGIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Raised with every change of this file. */
#define KESTREL_PLUGIN_VERSION 3u

/* The stream's bytes, without titles. read blocks until there are some: the
 * number copied (at most `room`), 0 at the end, negative when the stream is being
 * stopped. */
typedef struct {
  void* context;
  int (*read)(void* context, uint8_t* to, int room);
  /* Tells the title of the sound that follows ("artist - title", UTF-8): for codecs
   * that carry titles themselves. */
  void (*title)(void* context, const char* text);
} kestrel_input;

/* What a recogniser saw. */
typedef struct {
  uint32_t ctype; /* channel type code of bass.h */
  uint32_t rate;  /* Hz */
  uint32_t channels;
  uint32_t bitrate; /* bit/s, mean of the frames seen */
} kestrel_format;

/* Decoded sound: interleaved, -1 to 1, the decoder's until its next call. */
typedef struct {
  const float* samples;
  int frames;
  int channels;
  int rate;       /* Hz */
  uint32_t ctype; /* channel type code of bass.h: it may change with the sound */
} kestrel_sound;

enum { KESTREL_NO = 0, KESTREL_MORE = 1, KESTREL_YES = 2 };

typedef struct {
  /* Looks at the stream's first bytes: its own (fills `format`), not its own, or
   * more bytes needed. Called again with all of them when more have come. */
  int (*recognise)(const uint8_t* head, int length, kestrel_format* format);
  /* A decoder on `input`, which must outlive it; null without memory. */
  void* (*open)(const kestrel_input* input);
  /* 1 with some sound; 0 when the input has ended or is being stopped. Broken
   * data is skipped. One thread at a time. */
  int (*decode)(void* decoder, kestrel_sound* sound);
  void (*close)(void* decoder);
} kestrel_codec;

typedef struct {
  uint32_t version; /* KESTREL_PLUGIN_VERSION; stays first in all versions */
  uint32_t count;
  const kestrel_codec* codecs;
} kestrel_plugin;

/* A plug-in exports one function of this type under this name. The record is
 * static in the plug-in. */
typedef const kestrel_plugin* kestrel_plugin_entry(void);
#define KESTREL_PLUGIN_ENTRY "kestrel_plugin_get"

#ifdef __cplusplus
}
#endif

#endif
