/* The files that the card keeps: list, test, delete, upload and download. Conventions: kelvo.h.
 *
 * They are in five directories (vlDirectorySelector). A number that is none of them fails with
 * "DirectorySelector::_from_integral: invalid argument", and nothing is sent. What names of files may be is the card's
 * business. Names that come from a card may be anything: check them before making paths of them.
 *
 * A transfer goes in chunks of 8192 bytes and takes no more memory for a large file. The time-out of the connection is
 * that of each chunk, also when the card gives it in several answers. The local file is opened before anything is sent. However a transfer ends, the card's file is closed; a card
 * that has stopped answering is not waited for again. Transfers may run at once; two of the same card file on one
 * connection get in each other's way, as an upload closes what the connection has open under the name.
 */
#ifndef KELVO_FILE_API_H
#define KELVO_FILE_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* The card's directories. */
typedef enum vlDirectorySelector {
  vlDirectorySelector_BINFILES = 0,     /* binary files */
  vlDirectorySelector_CORRFILES = 1,    /* corrections of scan heads and of laser power */
  vlDirectorySelector_JOBFILES = 2,     /* jobs */
  vlDirectorySelector_LISTFILES = 3,    /* command lists */
  vlDirectorySelector_PROCVARFILES = 4, /* process variables */
} vlDirectorySelector;

/* How the card opens a file, as it stands in the command log: an upload opens with Create, a download with Open. */
typedef enum vlFileMode {
  vlFileMode_CreateNew = 1,    /* makes a file that is not there yet */
  vlFileMode_Create = 2,       /* makes a file, or empties the one that is there */
  vlFileMode_Open = 3,         /* opens a file that is there */
  vlFileMode_OpenOrCreate = 4, /* opens a file, or makes it */
  vlFileMode_Truncate = 5,     /* opens a file that is there and empties it */
  vlFileMode_Append = 6,       /* opens a file, or makes it, to write at its end */
} vlFileMode;

/* Called after every chunk of a transfer with the `user` pointer that was given with it, with what has been moved so
 * far and what is going to be moved, in bytes. Returns whether to go on: false ends the transfer, which then fails with
 * "The transfer was cancelled.". Runs on the thread that called the transferring function, inside it, so it may call
 * any function that this thread may call; vlDisconnect of the same connection makes the transfer fail. A transfer of no
 * bytes has no chunks. */
typedef bool (*vlFileProgressCallback)(void* user, uint64_t moved, uint64_t whole);

/* Writes the names of the files in a directory into `buffer` of `size` bytes, one behind the other, each with a
 * terminating zero; to `*length` how many bytes that is, and to `*count` the number of names. With a `size` of 0
 * `buffer` may be null and only the two numbers are written. Returns 0, or -1 ("Buffer is too small."; "The card sent a
 * file name that is none.": one with a zero in it). Remote. */
KELVO_API int32_t vlFileGetFiles(int32_t handle, int32_t directory, char* buffer, uint32_t size,
                                 uint32_t* length, uint32_t* count);
/* Writes whether the directory has a file `name` to `*exists`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlFileExists(int32_t handle, int32_t directory, const char* name, bool* exists);
/* Deletes the file `name`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlFileDelete(int32_t handle, int32_t directory, const char* name);
/* Sends the local file `path`; it becomes the card's file `name`, in place of one that is there. `progress` may be null.
 * What has been sent of an upload that fails stays on the card. Returns 0, or -1 with "Unable to open the local file!"
 * (nothing is sent; also for a directory), "Error in stream" (the local file cannot be read on), or "The transfer was
 * cancelled.". Remote. */
KELVO_API int32_t vlFilePut(int32_t handle, int32_t directory, const char* name, const char* path,
                            vlFileProgressCallback progress, void* user);
/* Fetches the card's file `name` into the local file `path`. `progress` may be null. While the download runs the bytes
 * are in a file beside it, ".kelvo-PROCESS-NUMBER.part"; it takes the place of `path` when all of them are there. When
 * the download fails it is removed and what was at `path` stays; only a process that is killed leaves it behind. So
 * the directory has to take new files. A symbolic link stays: what it leads to is replaced, or made. The new file has
 * the permissions of the old one, and its owner and group if the process may give them. Where `path` is a device or a
 * pipe it is written directly. Returns 0, or -1 with "Unable to open the local file!" (nothing is sent), "The local disk
 * has no room for the file." (none of it is fetched), "Error in stream" (it cannot be written on), "The transfer was
 * cancelled.", "The card's file ended early.", "The card sent more than it was asked for." or "The card sends the file
 * too slowly." (for 8192 bytes it took longer than the time-out). Remote. */
KELVO_API int32_t vlFileGet(int32_t handle, int32_t directory, const char* name, const char* path,
                            vlFileProgressCallback progress, void* user);

KELVO_EXTERN_C_END

#endif
