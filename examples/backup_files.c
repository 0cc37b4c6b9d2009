/* Backs up every file of a card into a folder, or restores them from there.
 *
 *     backup_files save FOLDER [HOST [PORT]]
 *     backup_files restore FOLDER [HOST [PORT]]
 *
 * The folder gets a folder for each of the card's directories. A file that the card has and the backup has not stays on
 * the card.
 */
#include <dirent.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"

enum { MOST_PATH = 4096 };

static const struct {
  int32_t number;
  const char* folder;
} directories[] = {
    {vlDirectorySelector_BINFILES, "BINFILES"},         {vlDirectorySelector_CORRFILES, "CORRFILES"},
    {vlDirectorySelector_JOBFILES, "JOBFILES"},         {vlDirectorySelector_LISTFILES, "LISTFILES"},
    {vlDirectorySelector_PROCVARFILES, "PROCVARFILES"},
};

static void Fail(const char* what) {
  fprintf(stderr, "%s: %s\n", what, strerror(errno));
  exit(EXIT_FAILURE);
}

static void JoinPath(char path[MOST_PATH], const char* folder, const char* name) {
  errno = ENAMETOOLONG;
  if (snprintf(path, MOST_PATH, "%s/%s", folder, name) >= MOST_PATH) Fail(name);
}

static void MakeFolder(const char* path) {
  if (mkdir(path, 0777) != 0 && errno != EEXIST) Fail(path);
}

/* A card may send any name: one that would lead out of the folder, or is a hidden file's, makes no path. */
static bool IsPlainName(const char* name) {
  if (name[0] == '\0' || name[0] == '.') return false;
  for (; *name != '\0'; ++name) {
    if (*name == '/' || (unsigned char)*name < ' ') return false;
  }
  return true;
}

/* Called after every chunk, on this thread. A false result would end the transfer. */
static bool ShowProgress(void* user, uint64_t moved, uint64_t whole) {
  printf("\r%s %3d %%", (const char*)user, (int)(100.0 * (double)moved / (double)whole));
  fflush(stdout);
  return true;
}

/* The names of the files in a directory of the card, one behind the other; the caller frees them. */
static char* ListFiles(int32_t card, int32_t directory, uint32_t* count) {
  uint32_t length = 0;
  CALL(vlFileGetFiles, card, directory, NULL, 0, &length, count);
  char* names = malloc(length + 1);
  if (names == NULL) Fail("the list of files");
  if (length > 0) CALL(vlFileGetFiles, card, directory, names, length, &length, count);
  return names;
}

static int SaveDirectory(int32_t card, int32_t directory, const char* folder) {
  uint32_t count = 0;
  char* names = ListFiles(card, directory, &count);
  const char* name = names;
  int saved = 0;
  MakeFolder(folder);
  for (uint32_t i = 0; i < count; ++i, name += strlen(name) + 1) {
    if (!IsPlainName(name)) {
      printf("skipped a file whose name makes no path\n");
      continue;
    }
    char path[MOST_PATH];
    JoinPath(path, folder, name);
    CALL(vlFileGet, card, directory, name, path, ShowProgress, path);
    printf("\rsaved %s\n", path);
    ++saved;
  }
  free(names);
  return saved;
}

static int RestoreDirectory(int32_t card, int32_t directory, const char* folder) {
  int restored = 0;
  DIR* entries = opendir(folder);
  if (entries == NULL) Fail(folder);
  for (const struct dirent* entry = readdir(entries); entry != NULL; entry = readdir(entries)) {
    if (!IsPlainName(entry->d_name)) continue;
    char path[MOST_PATH];
    JoinPath(path, folder, entry->d_name);
    CALL(vlFilePut, card, directory, entry->d_name, path, ShowProgress, path);
    printf("\rrestored %s\n", path);
    ++restored;
  }
  closedir(entries);
  return restored;
}

int main(int count, char** arguments) {
  CardAddress address;
  const bool isSave = count > 2 && strcmp(arguments[1], "save") == 0;
  const bool isRestore = count > 2 && strcmp(arguments[1], "restore") == 0;
  if (!(isSave || isRestore) || !ParseCardAddress(count - 3, arguments + 3, &address)) {
    fprintf(stderr, "usage: %s save|restore FOLDER [HOST [PORT]]\n", arguments[0]);
    return 2;
  }
  const int32_t card = (int32_t)CALL(vlConnect, address.host, address.port);
  if (isSave) MakeFolder(arguments[2]);
  int files = 0;
  for (size_t i = 0; i < sizeof directories / sizeof *directories; ++i) {
    const int32_t directory = directories[i].number;
    char folder[MOST_PATH];
    JoinPath(folder, arguments[2], directories[i].folder);
    files += isSave ? SaveDirectory(card, directory, folder) : RestoreDirectory(card, directory, folder);
  }
  printf("%d files\n", files);
  CALL(vlDisconnect, card);
  return EXIT_SUCCESS;
}
