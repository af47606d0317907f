/**
 * @mainpage Quaylink
 *
 * Read access to the music and files of Apple players and phones attached over USB.
 *
 * Two kinds of device are served. A classic player in disk mode is a removable drive whose root
 * holds the folder iPod_Control ("the disk road"). A phone-class device is reached through the
 * vendor's own device libraries, which are loaded at run time ("the mobile road"). The first
 * attached Apple device decides the road; the functions are the same on both, and all of them stand
 * in quaylink.h.
 *
 * @par Calling order
 * InitializeIPod comes first and TerminateIPod last; between them the other functions may be called
 * in any order. Those that need a device look for one themselves, as each says. Before
 * InitializeIPod, and after TerminateIPod, every function gives its failure result and does nothing
 * (DisconnectIPod, whose result is always 1, does nothing either).
 *
 * @par Strings
 * All strings are NUL-terminated 8-bit strings. Local paths and the strings of track records are in
 * the system's ANSI code page. Paths on a phone are "/"-separated, at most 255 bytes long, and pass
 * byte for byte. A string passed in is only read, during the call, and stays the caller's.
 *
 * @par Results
 * A boolean result is one byte: 1 for true, 0 for false. Failures are told by results alone;
 * nothing is logged, no message is shown, and no exception leaves the library. A failed call leaves
 * the library usable. Running out of memory counts as a failure of the call.
 *
 * @par Writing
 * When a phone's file is copied, errors in writing the local file are not noticed: a full disk
 * gives a short file and the result 1. A careful host checks that the disk still has room
 * afterwards. A phone that states a huge size can fill the disk, and keeps the call busy for as
 * long as it delivers.
 *
 * A file of a player's drive is copied by Windows' own copy, with its marks: the copy of a
 * read-only or hidden file is read-only or hidden, too, and cannot be replaced by another copy as
 * long as the host has not cleared the mark.
 *
 * @par Trust
 * What a database says is the device's word. A location may name any path, also one of another
 * computer, when the database was parsed without a detection before; on the disk road copy only
 * locations that begin with the player's drive letter and ":".
 *
 * @par Threads
 * The functions take no lock: call them from one thread at a time. The library starts no thread.
 *
 * @par Calling convention
 * cdecl, for the functions and for the callback. The exported names are undecorated.
 */
/**
 * @file
 * The whole interface of the library: ten functions, the track record and a callback.
 */
#ifndef QUAYLINK_QUAYLINK_H_
#define QUAYLINK_QUAYLINK_H_

#include <stddef.h>
#include <stdint.h>

/** @cond */
#if defined(_WIN32)
#define QUAYLINK_CALL __cdecl
#define QUAYLINK_EXPORT /* exported by the library's module-definition file */
#elif defined(__GNUC__)
#define QUAYLINK_CALL
#define QUAYLINK_EXPORT __attribute__((visibility("default")))
#else
#define QUAYLINK_CALL
#define QUAYLINK_EXPORT
#endif
/** @endcond */

/** @name The version of this header, and of the library that comes with it. */
/** @{ */
#define QUAYLINK_VERSION_MAJOR 1 /**< Grows when hosts have to be changed. */
#define QUAYLINK_VERSION_MINOR 0 /**< Grows when something is added. */
#define QUAYLINK_VERSION_PATCH 0 /**< Grows when nothing but faults are mended. */
/** All three in one number, which grows from version to version. */
#define QUAYLINK_VERSION_NUMBER \
  (QUAYLINK_VERSION_MAJOR * 65536 + QUAYLINK_VERSION_MINOR * 256 + QUAYLINK_VERSION_PATCH)
/** @} */

#ifdef __cplusplus
extern "C" {
#endif

/** One byte: 0 is false. An argument is true when its low byte is not zero; a result is 0 or 1. */
typedef unsigned char QuaylinkBool;

/** Size in bytes of each string of a TrackRecord, its terminating NUL included. */
enum { QUAYLINK_TEXT_SIZE = 256 };

/**
 * One track of a parsed database: 1024 bytes, four strings of 256 bytes each, NUL-terminated, in
 * the ANSI code page. One that the database does not have is empty. A title, an artist or an album
 * that does not fit is cut after its last whole character; a location that does not fit is left
 * empty.
 */
typedef struct TrackRecord {
  /**
   * Where the track's file is: a Windows path such as `F:\iPod_Control\Music\F05\ABCD.mp3` when the
   * last device detection before the parse found a player's drive, else a device path such as
   * `/iPod_Control/Music/F05/ABCD.mp3`.
   */
  char location[QUAYLINK_TEXT_SIZE];
  char artist[QUAYLINK_TEXT_SIZE]; /**< The track's artist, at byte 256 of the record. */
  char title[QUAYLINK_TEXT_SIZE];  /**< The track's title, at byte 512. */
  char album[QUAYLINK_TEXT_SIZE];  /**< The track's album, at byte 768. */
} TrackRecord;

/**
 * Receives one device path of EnumGenericFileFromIPod.
 *
 * @param devicePath  the path; valid during the call only, copy what is to be kept
 * @param context     the value given to EnumGenericFileFromIPod, unchanged
 *
 * Whatever is returned is ignored, and the walk cannot be stopped. The callback runs on the
 * caller's thread and may call any function of the library; it must not throw.
 */
typedef void(QUAYLINK_CALL* EnumFileCallback)(const char* devicePath, void* context);

/**
 * Makes the library ready: creates the device manager behind all other functions. Looks for no
 * device. A second call without TerminateIPod in between replaces the manager, its records and its
 * connection.
 *
 * @return non-zero when the manager was created, 0 when it could not be; no other meaning
 */
QUAYLINK_EXPORT uintptr_t QUAYLINK_CALL InitializeIPod(void);

/**
 * Destroys the device manager: empties the parsed database, lets go of the device libraries,
 * releases the track records. Call DisconnectIPod first when ConnectIPod opened a connection.
 * Without a manager it does nothing. A host that unloads the library calls this first.
 */
QUAYLINK_EXPORT void QUAYLINK_CALL TerminateIPod(void);

/**
 * Looks for an attached device and chooses the road by the first one found.
 *
 * For a player in disk mode a removable drive B: to Z: must hold `iPod_Control\Music`. The first
 * phone found loads the vendor's libraries, and from then on every file function takes the mobile
 * road until TerminateIPod.
 *
 * @return 1 when a device was found, else 0. For a phone 1 does not mean that it can be reached:
 *         ConnectIPod tells.
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL IsIPodConnected(void);

/**
 * Looks for an attached device as IsIPodConnected does, then opens a connection to a phone and
 * keeps it open. A player in disk mode needs no connection. Waits up to about two seconds for a
 * phone to answer.
 *
 * A connection that is open already is not tried: when the phone was unplugged meanwhile, call
 * DisconnectIPod first.
 *
 * When a phone has answered and then refuses the connection, what is known of it is kept, and the
 * next attempt begins with that. Once it has been plugged in again this may be out of date: the
 * phone can then stay unreachable, until TerminateIPod and InitializeIPod are called.
 * DisconnectIPod does not help, since there is no connection.
 *
 * @return 1 when the phone's connection is open or none is needed, else 0
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL ConnectIPod(void);

/**
 * Closes the connection that ConnectIPod opened, if there is one. When another phone was announced
 * meanwhile, it is that one which is told, and the first phone's session ends when the first phone
 * gives it up. This holds for every function that closes a connection.
 *
 * @return always 1
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL DisconnectIPod(void);

/**
 * Looks for an attached device and copies its music database to a local file. On a phone the whole
 * file system is listed to find it, a connection is opened when none is, and none is open
 * afterwards.
 *
 * @param destinationPath  local file, created or replaced, unless it is read-only; a failed copy
 *                         leaves it behind, empty or partial
 * @return 1 when the database was copied, else 0
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL CopyITunesDB(const char* destinationPath);

/**
 * Parses a local music database and hands out its track records, in ascending order of track id.
 * Needs no device. Each call parses the file anew; ask for the count first (maxRecords 0), then for
 * the records. The records of the last successful parse stay with the library for CopyFileFromIPod;
 * a failed parse leaves them as they were.
 *
 * @param databasePath  local path of a copied iTunesDB file
 * @param maxRecords    number of records that buffer has room for; 0 asks for the count, a
 *                      negative number copies nothing
 * @param buffer        host memory for maxRecords records of 1024 bytes each, or null to ask for
 *                      the count
 * @return when asking for the count, the number of tracks; otherwise the number of records
 *         copied, at most maxRecords and 0 when maxRecords is negative. 0 when the file cannot be
 *         opened or is no database.
 */
QUAYLINK_EXPORT int32_t QUAYLINK_CALL ParseITunesDB(const char* databasePath, int32_t maxRecords,
                                                    TrackRecord* buffer);

/**
 * Copies the audio file of one track of the last successful parse to a local file. Looks for no
 * device: the road is the one of the last detection. On a phone a connection is opened when none
 * is, and none is open afterwards.
 *
 * @param recordIndex      index of the track's record, from 0
 * @param destinationPath  local file, created or replaced, unless it is read-only; not touched
 *                         when recordIndex is out of range; a failed copy leaves it behind, empty
 *                         or partial
 * @return 1 when the file was copied, else 0. Errors in writing are not noticed on the mobile road.
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL CopyFileFromIPod(uint32_t recordIndex,
                                                            const char* destinationPath);

/**
 * Lists the files of a phone, calling the callback once for each, folder by folder. The list is
 * made before the first call. On the disk road there is nothing to list: 1, and no call.
 *
 * The list is complete as far as the phone told. A phone that fails to go on with a folder, such as
 * one that is unplugged meanwhile, ends that folder without a failure; entries that it tells
 * nothing about are left out.
 *
 * @param autoConnect  true: look for a device, open a connection when none is, and have closed it
 *                     when the callback is called first; false: use the connection that
 *                     ConnectIPod opened
 * @param callback     receives each device path; must not be null
 * @param context      handed to the callback unchanged
 * @return 1 when every folder that the phone told of could be opened, else 0 without any call of
 *         the callback
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL EnumGenericFileFromIPod(QuaylinkBool autoConnect,
                                                                   EnumFileCallback callback,
                                                                   void* context);

/**
 * Copies any file of a device to a local file.
 *
 * @param autoConnect      true: look for a device, and on a phone open a connection when none is
 *                         and leave none open; false: use the connection that ConnectIPod opened
 * @param devicePath       path on the phone as EnumGenericFileFromIPod gives it; on the disk road
 *                         a Windows path on the player's drive
 * @param destinationPath  local file, created or replaced, unless it is read-only; a failed copy
 *                         may leave it behind
 * @return 1 when the file was copied, else 0. Errors in writing are not noticed on the mobile
 *         road. A phone's file of no bytes cannot be copied: 0.
 */
QUAYLINK_EXPORT QuaylinkBool QUAYLINK_CALL CopyGenericFileFromIPod(QuaylinkBool autoConnect,
                                                                   const char* devicePath,
                                                                   const char* destinationPath);

#ifdef __cplusplus
} /* extern "C" */

static_assert(sizeof(TrackRecord) == 1024, "a track record is 1024 bytes");
static_assert(offsetof(TrackRecord, location) == 0, "location comes first");
static_assert(offsetof(TrackRecord, artist) == 256, "artist at byte 256");
static_assert(offsetof(TrackRecord, title) == 512, "title at byte 512");
static_assert(offsetof(TrackRecord, album) == 768, "album at byte 768");
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
_Static_assert(sizeof(TrackRecord) == 1024, "a track record is 1024 bytes");
_Static_assert(offsetof(TrackRecord, location) == 0, "location comes first");
_Static_assert(offsetof(TrackRecord, artist) == 256, "artist at byte 256");
_Static_assert(offsetof(TrackRecord, title) == 512, "title at byte 512");
_Static_assert(offsetof(TrackRecord, album) == 768, "album at byte 768");
#endif

#endif /* QUAYLINK_QUAYLINK_H_ */
