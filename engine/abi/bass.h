/* The audio engine's C interface: the part of the published interface of its
 * name, version 2.3, that the player uses. Exported undecorated; stdcall on x86.
 * Values that hold an address there in 32 bits are uintptr_t here, which is the
 * published layout on x86 and wide enough on x64.
 *
 * Every function may be called from any thread unless it says otherwise; none
 * throws; each that fails leaves its reason for BASS_ErrorGetCode, which is kept
 * per thread. */
#ifndef KESTREL_ENGINE_BASS_H
#define KESTREL_ENGINE_BASS_H

#include <stdint.h>

#if defined(_WIN32) && !defined(_WIN64)
#define BASS_CALL __stdcall
#else
#define BASS_CALL
#endif

#if defined(_WIN32)
#define BASS_API BASS_CALL
#else
#define BASS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef uint32_t BASS_DWORD;
typedef uint64_t BASS_QWORD;
typedef BASS_DWORD HSTREAM;
typedef BASS_DWORD HSYNC;
typedef BASS_DWORD HPLUGIN;
typedef int32_t BASS_BOOL;

/* Error codes of BASS_ErrorGetCode. */
enum {
  BASS_OK = 0,
  BASS_ERROR_MEM = 1,
  BASS_ERROR_FILEOPEN = 2,
  BASS_ERROR_DRIVER = 3,
  BASS_ERROR_BUFLOST = 4,
  BASS_ERROR_HANDLE = 5,
  BASS_ERROR_FORMAT = 6,
  BASS_ERROR_POSITION = 7,
  BASS_ERROR_INIT = 8,
  BASS_ERROR_START = 9,
  BASS_ERROR_ALREADY = 14,
  BASS_ERROR_ILLTYPE = 19,
  BASS_ERROR_ILLPARAM = 20,
  BASS_ERROR_DEVICE = 23,
  BASS_ERROR_NOPLAY = 24,
  BASS_ERROR_NONET = 32,
  BASS_ERROR_CREATE = 33,
  BASS_ERROR_NOTAVAIL = 37,
  BASS_ERROR_TIMEOUT = 40,
  BASS_ERROR_FILEFORM = 41,
  BASS_ERROR_VERSION = 43,
  BASS_ERROR_CODEC = 44,
  BASS_ERROR_UNKNOWN = -1
};

/* BASS_SetConfig options. */
enum { BASS_CONFIG_MAXVOL = 3, BASS_CONFIG_NET_PREBUF = 15 };

/* BASS_StreamCreateURL: pass the server's status and header texts, with length
 * 0, to the download callback. */
#define BASS_STREAM_STATUS 0x800000u

/* BASS_StreamGetFilePosition modes; failure is 0xFFFFFFFF. */
enum { BASS_FILEPOS_DECODE = 0, BASS_FILEPOS_DOWNLOAD = 1, BASS_FILEPOS_END = 2 };
#define BASS_FILEPOS_ERROR 0xFFFFFFFFu

/* BASS_ChannelGetTags types. ICY: zero-terminated texts, ended by an empty one.
 * META: one zero-terminated text, "StreamTitle='…';". */
enum { BASS_TAG_ICY = 4, BASS_TAG_META = 5 };

/* BASS_ChannelSetSync type: a title tag has been reached; `data` is the address
 * of its text, valid during the call. */
#define BASS_SYNC_META 4u

/* Channel type codes that this engine reports. */
#define BASS_CTYPE_STREAM_OGG 0x10002u
#define BASS_CTYPE_STREAM_MP1 0x10003u
#define BASS_CTYPE_STREAM_MP2 0x10004u
#define BASS_CTYPE_STREAM_MP3 0x10005u
#define BASS_CTYPE_STREAM_FLAC 0x10900u
#define BASS_CTYPE_STREAM_AAC 0x10b00u
#define BASS_CTYPE_STREAM_MP4 0x10b01u

/* The first four words of the record; a library may write more, so a caller
 * gives it room (the player passes BASS_CHANNELINFO_ROOM bytes). */
typedef struct {
  BASS_DWORD freq;
  BASS_DWORD chans;
  BASS_DWORD flags;
  BASS_DWORD ctype;
} BASS_CHANNELINFO;
#define BASS_CHANNELINFO_ROOM 64

/* Downloaded bytes, in order, on a thread of the stream's own, when the decoder has
 * passed them; titles are already taken out, and told (BASS_SYNC_META) between the
 * bytes they stand between. length 0 with a text: a status or header line of the server
 * (BASS_STREAM_STATUS), also while a lost connection is made again. length 0 without
 * a buffer: end of the download; a lost connection is none. May stop the stream, with
 * handle 0 while it is still being opened. */
typedef void(BASS_CALL DOWNLOADPROC)(const void* buffer, BASS_DWORD length, uintptr_t user);

/* On the engine's own thread; must not stop or free the stream. */
typedef void(BASS_CALL SYNCPROC)(HSYNC handle, BASS_DWORD channel, uintptr_t data, uintptr_t user);

/* 0x0203 in the high 16 bits. */
BASS_DWORD BASS_API BASS_GetVersion(void);
/* Opens output `device` (-1: the default one). `win` and `clsid` are not used.
 * FALSE: DEVICE, ALREADY, DRIVER. */
BASS_BOOL BASS_API BASS_Init(int device, BASS_DWORD freq, BASS_DWORD flags, void* win,
                             const void* clsid);
/* Stops and frees every stream and the output. Never waits for the network. */
BASS_BOOL BASS_API BASS_Free(void);
/* The option's previous value, or 0xFFFFFFFF (ILLPARAM). */
BASS_DWORD BASS_API BASS_SetConfig(BASS_DWORD option, BASS_DWORD value);
/* Code of the calling thread's last call, BASS_OK after a success. */
int BASS_API BASS_ErrorGetCode(void);
/* Loads a decoder plug-in by file name (8-bit). 0: FILEOPEN, FILEFORM, VERSION,
 * ALREADY. */
HPLUGIN BASS_API BASS_PluginLoad(const char* file, BASS_DWORD flags);
/* 0 frees all. */
BASS_BOOL BASS_API BASS_PluginFree(HPLUGIN handle);

/* Connects, reads the headers and recognises the format; blocks until then. The
 * stream downloads and decodes ahead at once and plays after BASS_ChannelPlay.
 * 0: INIT, ILLPARAM, NONET, TIMEOUT, FILEOPEN, FILEFORM (unsupported format). */
HSTREAM BASS_API BASS_StreamCreateURL(const char* url, BASS_DWORD offset, BASS_DWORD flags,
                                      DOWNLOADPROC* proc, uintptr_t user);
/* Stops and frees. No callback runs once it has returned, unless called from
 * one. */
BASS_BOOL BASS_API BASS_StreamFree(HSTREAM handle);
/* Bytes; see the modes above. END of an endless stream: the size of its download
 * buffer. */
BASS_DWORD BASS_API BASS_StreamGetFilePosition(HSTREAM handle, BASS_DWORD mode);

/* Null: HANDLE, NOTAVAIL. The text is the engine's, and valid until the stream is
 * freed, a title's at least until 32 others have been asked for. */
const char* BASS_API BASS_ChannelGetTags(BASS_DWORD handle, BASS_DWORD tags);
HSYNC BASS_API BASS_ChannelSetSync(BASS_DWORD handle, BASS_DWORD type, BASS_QWORD param,
                                   SYNCPROC* proc, uintptr_t user);
BASS_BOOL BASS_API BASS_ChannelGetInfo(BASS_DWORD handle, BASS_CHANNELINFO* info);
/* freq -1, volume -1 and pan -101 leave each as it is. Volume runs from 0 to the
 * configured maximum. */
BASS_BOOL BASS_API BASS_ChannelSetAttributes(BASS_DWORD handle, int freq, int volume, int pan);
BASS_BOOL BASS_API BASS_ChannelPlay(BASS_DWORD handle, BASS_BOOL restart);
/* Ends the stream's sound and its network use; the handle stays valid until
 * freed. 0 (which fails with HANDLE) ends the BASS_StreamCreateURL calls under way;
 * one that comes too soon for that can be made up for in the download callback. */
BASS_BOOL BASS_API BASS_ChannelStop(BASS_DWORD handle);

#ifdef __cplusplus
}
#endif

#endif
