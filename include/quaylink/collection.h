/**
 * @file
 * All that a player's music database knows, for hosts: the interface of quaylink-collection.
 *
 * A collection is what one database (a player's file iTunesDB, or iTunesCDB in its compressed form)
 * tells: tracks with all their properties, and playlists. It needs no device, and knows nothing of
 * the ten functions in quaylink.h.
 *
 * @par Calling order
 * One of the three functions that open comes first: QuaylinkOpenFile, QuaylinkOpenMemory or
 * QuaylinkOpenStream. They read the whole database; afterwards neither the file nor the memory nor
 * the callback is touched again. Then QuaylinkGetInfo, QuaylinkGetTrack and QuaylinkGetPlaylist in
 * any order, and QuaylinkClose at the end.
 *
 * @code
 * QuaylinkCollection* collection = NULL;
 * QuaylinkError error = {0};
 * error.structSize = sizeof(error);
 * if (QuaylinkOpenFile("copy.iTunesDB", NULL, &collection, &error) != QUAYLINK_OK) {
 *   fprintf(stderr, "%s\n", error.message);
 *   return 1;
 * }
 * QuaylinkTrack track = {0};
 * track.structSize = sizeof(track);
 * for (uint32_t i = 0; QuaylinkGetTrack(collection, i, &track) == QUAYLINK_OK; ++i) {
 *   printf("%s - %s\n", track.artist, track.title);
 * }
 * QuaylinkClose(collection);
 * @endcode
 *
 * @par Strings
 * All strings are NUL-terminated UTF-8 on every system, paths too. What the database holds is made
 * valid UTF-8: U+FFFD stands for what is none. Strings that are handed out, and the lists of a
 * playlist's tracks, belong to the collection and are valid until it is closed. Strings and memory
 * passed in are only read, during the call, and stay the caller's.
 *
 * @par Structs
 * Each begins with structSize, which the caller sets to the size of the struct that it was built
 * with, in every struct that it passes. Later versions of the library add fields at the end only.
 * The library fills what fits into structSize bytes; a field that is new to it (because the host
 * was built with a later header) becomes zero or null.
 *
 * @par What the database does not say
 * Numbers are 0 and strings are empty, never null. Older players know fewer properties than newer
 * ones.
 *
 * @par Times
 * Seconds since 1904-01-01 00:00:00 on the player's own clock, which has no time zone; 0 is none.
 * Less QUAYLINK_SECONDS_TO_1970 they count from 1970, as the C function gmtime takes them: that
 * breaks them down into what the player's clock showed.
 *
 * @par Results and errors
 * Every function that can fail returns a QuaylinkResult, QUAYLINK_OK when it succeeded. Nothing is
 * logged, and no exception leaves the library. Where a function fails, nothing is handed out.
 *
 * @par Threads
 * Any number of collections may be open at once, each used by a thread of its own. An open
 * collection never changes: several threads may ask the same one at the same time. It must not be
 * closed meanwhile. The library starts no thread.
 *
 * @par Costs
 * Opening a file of n bytes that is not compressed takes time proportional to n, and less than 24 n
 * bytes plus 1 MiB, whatever the file holds. A compressed database is inflated to at most
 * 256 MiB and to at most 100 times its size, and refused beyond that.
 *
 * @par Calling convention
 * cdecl, for the functions and for the callback. The exported names are undecorated.
 */
#ifndef QUAYLINK_COLLECTION_H_
#define QUAYLINK_COLLECTION_H_

#include <stddef.h>
#include <stdint.h>

/** @cond */
#ifndef QUAYLINK_CALL
#if defined(_WIN32)
#define QUAYLINK_CALL __cdecl
#else
#define QUAYLINK_CALL
#endif
#endif
#ifndef QUAYLINK_EXPORT
#if !defined(_WIN32) && defined(__GNUC__)
#define QUAYLINK_EXPORT __attribute__((visibility("default")))
#else
#define QUAYLINK_EXPORT
#endif
#endif
/** @endcond */

/** @name The version of this header; QuaylinkCollectionVersion gives that of the library. */
/** @{ */
#define QUAYLINK_COLLECTION_VERSION_MAJOR 1 /**< Grows when hosts have to be changed. */
#define QUAYLINK_COLLECTION_VERSION_MINOR 0 /**< Grows when something is added. */
#define QUAYLINK_COLLECTION_VERSION_PATCH 0 /**< Grows when nothing but faults are mended. */
/** All three in one number, which grows from version to version. */
#define QUAYLINK_COLLECTION_VERSION_NUMBER                                               \
  (QUAYLINK_COLLECTION_VERSION_MAJOR * 65536 + QUAYLINK_COLLECTION_VERSION_MINOR * 256 + \
   QUAYLINK_COLLECTION_VERSION_PATCH)
/** @} */

/** What a time has to be lessened by to count from 1970 instead of 1904. */
#define QUAYLINK_SECONDS_TO_1970 2082844800u

/** Stands for an offset where there is none. */
#define QUAYLINK_NO_OFFSET UINT64_MAX

#ifdef __cplusplus
extern "C" {
#endif

/** An open collection. */
typedef struct QuaylinkCollection QuaylinkCollection;

/** The results of the functions. Later versions may add some. */
typedef enum QuaylinkResult {
  QUAYLINK_OK = 0,
  /** A null pointer where one is needed, or a structSize that no version of the struct has. */
  QUAYLINK_INVALID_ARGUMENT = 1,
  QUAYLINK_CANNOT_OPEN = 2,    /**< The file is not there, or may not be read. */
  QUAYLINK_CANNOT_READ = 3,    /**< Reading failed midway, or the callback said so. */
  QUAYLINK_NOT_A_DATABASE = 4, /**< It does not begin as a database does. */
  /** Strict reading met a place that is not as it should be. Read it tolerantly for the rest. */
  QUAYLINK_DAMAGED = 5,
  /** A compressed database that would take more than its bounds, or a stream of 4 GiB. */
  QUAYLINK_TOO_LARGE = 6,
  QUAYLINK_NO_MEMORY = 7,
  QUAYLINK_OUT_OF_RANGE = 8 /**< No track or playlist has that index. */
} QuaylinkResult;

/** Why a collection could not be opened. */
typedef struct QuaylinkError {
  uint32_t structSize; /**< sizeof(QuaylinkError), set by the caller. */
  int32_t code;        /**< The QuaylinkResult that the function returned. */
  /**
   * The byte at which damage was met, counted from the beginning of the database; of a compressed
   * one, of its inflated form (the header, and what was compressed behind it). QUAYLINK_NO_OFFSET
   * where the error has no place.
   */
  uint64_t offset;
  char message[240]; /**< One line in English, for people, without the file's name. */
} QuaylinkError;

/** How a database is read. */
typedef enum QuaylinkReading {
  /**
   * Everything that is whole is given: the tracks before the place where a file was cut, all tracks
   * of a file whose stated lengths do not add up, the lists beside a broken one. A track is whole
   * when its header and all its data lie in the file and fit together; there is never half a track,
   * nor half a playlist. QuaylinkGetInfo tells whether anything was wrong.
   */
  QUAYLINK_TOLERANT = 0,
  /**
   * Accepts exactly the databases that ParseITunesDB accepts, with the same tracks, and what they
   * become when they are compressed; anything else is QUAYLINK_DAMAGED. Such a database may still
   * have flaws that ParseITunesDB does not mind; QuaylinkGetInfo tells.
   */
  QUAYLINK_STRICT = 1
} QuaylinkReading;

/** Whether the file "Play Counts" in the folder of the database is taken in. */
typedef enum QuaylinkPlayCounts {
  QUAYLINK_PLAY_COUNTS_BESIDE = 0, /**< It is, where there is one. For QuaylinkOpenFile only. */
  QUAYLINK_PLAY_COUNTS_IGNORED = 1 /**< It is not: the numbers are those of the database alone. */
} QuaylinkPlayCounts;

/**
 * How to open a collection. With all fields but structSize 0, a database is read tolerantly, and
 * the play counts beside it are taken in; so it is with a null pointer instead of the struct.
 */
typedef struct QuaylinkOpenOptions {
  uint32_t structSize; /**< sizeof(QuaylinkOpenOptions), set by the caller. */
  uint32_t reading;    /**< A QuaylinkReading. */
  uint32_t playCounts; /**< A QuaylinkPlayCounts; counts only where the three fields below are 0. */
  uint32_t reserved;   /**< 0. */
  /** A file of play counts to take in wherever it lies; null for none. It must be there. */
  const char* playCountsPath;
  /** The same in memory, where playCountsPath is null; null for none. */
  const void* playCountsBytes;
  size_t playCountsSize; /**< The number of bytes there. */
} QuaylinkOpenOptions;

/** What became of the play counts. */
typedef enum QuaylinkPlayCountsState {
  QUAYLINK_PLAY_COUNTS_NONE = 0,  /**< There were none, or they were not asked for. */
  QUAYLINK_PLAY_COUNTS_TAKEN = 1, /**< They are part of the tracks' properties. */
  /** They are broken or belong to another database (their number is not that of the tracks). */
  QUAYLINK_PLAY_COUNTS_LEFT = 2
} QuaylinkPlayCountsState;

/** A collection as a whole. */
typedef struct QuaylinkInfo {
  uint32_t structSize;    /**< sizeof(QuaylinkInfo), set by the caller. */
  uint32_t trackCount;    /**< Tracks have the indexes from 0 to trackCount - 1. */
  uint32_t playlistCount; /**< And playlists those from 0 to playlistCount - 1. */
  uint32_t compressed;    /**< 1 when the database was compressed, else 0. */
  uint32_t playCounts;    /**< A QuaylinkPlayCountsState. */
  uint32_t damaged;       /**< 1 when anything was wrong with the database, else 0. */
  uint64_t damageOffset; /**< Where it was met first, as in QuaylinkError, or QUAYLINK_NO_OFFSET. */
  const char* damage;    /**< What was wrong there: one line in English, for people; or empty. */
} QuaylinkInfo;

/** Bits of a track's mediaType. 0, in databases of older players, means audio. */
enum {
  QUAYLINK_MEDIA_AUDIO = 0x01,
  QUAYLINK_MEDIA_VIDEO = 0x02,
  QUAYLINK_MEDIA_PODCAST = 0x04,
  QUAYLINK_MEDIA_AUDIOBOOK = 0x08,
  QUAYLINK_MEDIA_MUSIC_VIDEO = 0x20,
  QUAYLINK_MEDIA_TELEVISION = 0x40
};

/**
 * One track. Tracks stand in ascending order of id, so that a track's index is the index of its
 * record in ParseITunesDB. Of two with one id the first in the file counts.
 *
 * With play counts taken in, playCount, skipCount, lastPlayed, lastSkipped, rating and bookmarkMs
 * are what the player knew last. A rating above 100 among them is left, and sums end at UINT32_MAX.
 */
typedef struct QuaylinkTrack {
  uint32_t structSize;   /**< sizeof(QuaylinkTrack), set by the caller. */
  uint32_t id;           /**< Its number in this database; another one when that is written anew. */
  uint64_t persistentId; /**< Its number for good; 0 in databases of very old players. */

  /**
   * Where its file is on the player: a path from the device's root, such as
   * "/iPod_Control/Music/F05/ABCD.mp3". There is never a drive letter.
   */
  const char* location;
  const char* title;       /**< Its title. */
  const char* artist;      /**< Its artist. */
  const char* album;       /**< The album that it is on. */
  const char* albumArtist; /**< The album's artist, where that is another. */
  const char* genre;       /**< Its genre. */
  const char* composer;    /**< Its composer. */
  const char* comment;     /**< The owner's comment. */
  const char* grouping;    /**< What groups it with others, such as the work that it is part of. */
  const char* description; /**< Of an episode: what it is about. */
  const char* category;    /**< Of a podcast: its category. */
  const char* subtitle;    /**< Of an episode: in short, what it is about. */
  const char* fileType;    /**< In words, such as "MPEG audio file". */
  const char* sortTitle;   /**< What to sort by in place of the title; so with the next five. */
  const char* sortArtist;  /**< Of the artist. */
  const char* sortAlbum;   /**< Of the album. */
  const char* sortAlbumArtist; /**< Of the album's artist. */
  const char* sortComposer;    /**< Of the composer. */
  const char* sortShow;        /**< Of the television show. */
  const char* show;            /**< Of a television show: its name. */
  const char* episode;         /**< The episode's name or code. */
  const char* network;         /**< The network that it was shown on. */
  const char* podcastUrl;      /**< Of a podcast's episode: where its file came from. */
  const char* podcastFeed;     /**< The podcast's feed. */

  uint32_t trackNumber;    /**< Its number on the disc. */
  uint32_t trackCount;     /**< Tracks on the disc. */
  uint32_t discNumber;     /**< The number of the disc. */
  uint32_t discCount;      /**< How many discs the album has. */
  uint32_t year;           /**< The year of its release. */
  uint32_t lengthMs;       /**< How long it plays, in milliseconds. */
  uint32_t fileSize;       /**< Bytes. */
  uint32_t bitRate;        /**< kbit/s. */
  uint32_t sampleRate;     /**< Hz. */
  uint32_t beatsPerMinute; /**< Its speed. */
  uint32_t rating;         /**< 0 to 100, 20 for each star. */
  uint32_t playCount;      /**< How often it was played. */
  uint32_t skipCount;      /**< How often it was skipped. */
  uint32_t compilation;    /**< 1 when it is part of a compilation, else 0. */
  uint32_t checked;        /**< 1 when it is checked, else 0. */
  uint32_t mediaType;      /**< Bits QUAYLINK_MEDIA_…, as stored. */
  uint32_t seasonNumber;   /**< Of a television show. */
  uint32_t episodeNumber;  /**< Of a television show or a podcast. */
  uint32_t bookmarkMs;     /**< Where an audiobook or a podcast goes on. */
  uint32_t added;          /**< A time, as all that follow. */
  uint32_t modified;       /**< When its file was. */
  uint32_t lastPlayed;     /**< When it was played last. */
  uint32_t lastSkipped;    /**< When it was skipped last. */
  uint32_t released;       /**< When it was released. */
} QuaylinkTrack;

/** The kinds of playlists. Later versions may add some. */
typedef enum QuaylinkPlaylistKind {
  QUAYLINK_ORDINARY = 0, /**< The owner put it together. */
  QUAYLINK_MASTER = 1,   /**< Holds every track; its name is the player's. */
  QUAYLINK_SMART = 2,    /**< Put together by a rule; its tracks are listed all the same. */
  QUAYLINK_PODCASTS = 3  /**< The list of podcasts. */
} QuaylinkPlaylistKind;

/** One playlist. Playlists stand in the order of the file. */
typedef struct QuaylinkPlaylist {
  uint32_t structSize;   /**< sizeof(QuaylinkPlaylist), set by the caller. */
  uint32_t kind;         /**< A QuaylinkPlaylistKind. */
  uint64_t persistentId; /**< Its number for good; 0 where the database has none. */
  const char* name;      /**< Its name. */
  /**
   * The indexes of its tracks, in the player's order; a track may be there more than once. Null at
   * most where there are none.
   */
  const uint32_t* tracks;
  uint32_t trackCount; /**< How many there are. */
  uint32_t reserved;   /**< 0. */
} QuaylinkPlaylist;

/**
 * Gives the next bytes of a database.
 *
 * @param context  the value given to QuaylinkOpenStream, unchanged
 * @param buffer   room for them
 * @param size     how many there is room for, at least 1
 * @return the number of bytes put there, at most size; 0 at the end of the database; a negative
 *         number when reading failed, which ends the opening with QUAYLINK_CANNOT_READ
 *
 * Fewer bytes than there is room for are no sign of the end. The callback runs on the caller's
 * thread and must not throw.
 */
typedef int32_t(QUAYLINK_CALL* QuaylinkReadCallback)(void* context, void* buffer, uint32_t size);

/**
 * Opens the database in a file.
 *
 * Beside the file two others may be looked at, in the same folder: "Play Counts", as the options
 * say; and, where the file is named iTunesDB and is empty, as on newer players, "iTunesCDB", which
 * is then read in its place. A compressed database may also be named itself. A pipe is read once,
 * to its end.
 *
 * @param path        the file's path
 * @param options     how to read it, or null
 * @param collection  receives the collection, to be closed with QuaylinkClose; null on failure
 * @param error       receives what went wrong, on success QUAYLINK_OK and an empty message; or null
 * @return QUAYLINK_OK or any other QuaylinkResult but QUAYLINK_OUT_OF_RANGE
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkOpenFile(const char* path,
                                                              const QuaylinkOpenOptions* options,
                                                              QuaylinkCollection** collection,
                                                              QuaylinkError* error);

/**
 * Opens the database in memory. Looks at no file, but at the one that the options name.
 *
 * @param bytes       the whole database, compressed or not; may be null when size is 0
 * @param size        its length
 * @param options     how to read it, or null
 * @param collection  as of QuaylinkOpenFile
 * @param error       as of QuaylinkOpenFile
 * @return as QuaylinkOpenFile does
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkOpenMemory(const void* bytes, size_t size,
                                                                const QuaylinkOpenOptions* options,
                                                                QuaylinkCollection** collection,
                                                                QuaylinkError* error);

/**
 * Opens the database that a callback gives piece by piece, from front to back and once. Looks at no
 * file, but at the one that the options name. The database is held in memory until it is open. One
 * that does not begin as a database does is not read further.
 *
 * @param read        gives the next bytes
 * @param context     handed to the callback unchanged
 * @param options     how to read it, or null
 * @param collection  as of QuaylinkOpenFile
 * @param error       as of QuaylinkOpenFile
 * @return as QuaylinkOpenFile does
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkOpenStream(QuaylinkReadCallback read,
                                                                void* context,
                                                                const QuaylinkOpenOptions* options,
                                                                QuaylinkCollection** collection,
                                                                QuaylinkError* error);

/**
 * Closes a collection. All strings and lists that it handed out end with it.
 *
 * @param collection  the collection, or null, which does nothing
 */
QUAYLINK_EXPORT void QUAYLINK_CALL QuaylinkClose(QuaylinkCollection* collection);

/**
 * Tells about a collection as a whole. Its damage string is the collection's.
 *
 * @param collection  an open collection
 * @param info        receives it; its structSize is set
 * @return QUAYLINK_OK or QUAYLINK_INVALID_ARGUMENT
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkGetInfo(const QuaylinkCollection* collection,
                                                             QuaylinkInfo* info);

/**
 * Gives a track with all its properties. Its strings are the collection's.
 *
 * @param collection  an open collection
 * @param index       the track's index, from 0
 * @param track       receives it; its structSize is set. Untouched when the call fails
 * @return QUAYLINK_OK, QUAYLINK_OUT_OF_RANGE or QUAYLINK_INVALID_ARGUMENT
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkGetTrack(const QuaylinkCollection* collection,
                                                              uint32_t index, QuaylinkTrack* track);

/**
 * Gives a playlist with its tracks. Its name and its list of tracks are the collection's.
 *
 * @param collection  an open collection
 * @param index       the playlist's index, from 0
 * @param playlist    receives it; its structSize is set. Untouched when the call fails
 * @return QUAYLINK_OK, QUAYLINK_OUT_OF_RANGE or QUAYLINK_INVALID_ARGUMENT
 */
QUAYLINK_EXPORT QuaylinkResult QUAYLINK_CALL QuaylinkGetPlaylist(
    const QuaylinkCollection* collection, uint32_t index, QuaylinkPlaylist* playlist);

/**
 * Tells the version of the library that is running.
 *
 * @return its version in the form of QUAYLINK_COLLECTION_VERSION_NUMBER
 */
QUAYLINK_EXPORT uint32_t QUAYLINK_CALL QuaylinkCollectionVersion(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* QUAYLINK_COLLECTION_H_ */
