/* Fonts: build them from command lists, send them to the card, and fetch, activate, delete, load and store them
 * there. Conventions: kelvo.h.
 *
 * A font is a set of glyphs under character codes (16 bits), at most one a character. A glyph is the commands that
 * draw the character. They run where the list has arrived that marks the character, so a glyph is made of relative
 * moves, the last of which goes to where the next character begins.
 *
 * Like a list, a font lives in the application's memory under a font handle (int64_t) and on the card under a
 * font id (int32_t) that the application chooses. Functions that build a font are local and take the font
 * handle; functions that act on the card take the connection handle. Font handles are made like list handles
 * (kelvo.h, 4), and none is the handle of a list. Any thread may use a font at any time, also while another
 * thread changes or releases it.
 */
#ifndef KELVO_FONT_API_H
#define KELVO_FONT_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* ---- Fonts and their handles ---- */

/* Makes a font without glyphs on the connection `handle`; on the card it will have the id `font_id`. Returns its
 * font handle, or -1 (kelvo.h, 3; "Font handle already occupied."). Local. */
KELVO_API int64_t vlFontAllocate(int32_t handle, int32_t font_id);

/* Releases the font. Safe while another thread changes it or sends it. Returns 0, or -1 (kelvo.h, 3; "Font does
 * not exist."): unlike vlListReleaseHandle it fails for a font that does not exist. Local. */
KELVO_API int32_t vlFontReleaseHandle(int64_t font);

/* ---- Glyphs ---- */

/* Makes the commands of `list` the glyph of `character`. They are copied, so the list may change or be released
 * afterwards; branches to labels become branches to where the labels are. The list may be one of another
 * connection. Returns 0, or -1 (kelvo.h, 3; "Font does not exist."; "List does not exist."; "Char already
 * occupied.": the glyph that is there stays; a label that vlListSet would refuse). Local. */
KELVO_API int32_t vlFontAddChar(int64_t font, uint16_t character, int64_t list);

/* Makes a new list with a copy of the commands of `character`'s glyph, on the connection of the font. Returns
 * its list handle, which is released like any other, or -1 (kelvo.h, 3; "Font does not exist."; "Character does
 * not exist."; "List handle already occupied."). Local. */
KELVO_API int64_t vlFontGetChar(int64_t font, uint16_t character);

/* Removes the glyph of `character`. Returns 0, or -1 (kelvo.h, 3; "Font does not exist."; "Character does not
 * exist."). Local. */
KELVO_API int32_t vlFontRemoveChar(int64_t font, uint16_t character);

/* Removes every glyph. Returns 0, or -1 (kelvo.h, 3; "Font does not exist."). Local. */
KELVO_API int32_t vlFontClear(int64_t font);

/* Writes the codes of the characters that have a glyph to `characters`, an array of `capacity` elements, in
 * ascending order, and their number to `*count`. More characters than `capacity` fail with "Buffer is too small."
 * and write nothing. `characters` may be null when `capacity` is 0. Returns 0, or -1 (kelvo.h, 3; "Font does not
 * exist."). Local. */
KELVO_API int32_t vlFontChars(int64_t font, uint16_t* characters, uint32_t capacity, uint32_t* count);

/* Writes the number of glyphs to `*count`. Returns 0, or -1 (kelvo.h, 3; "Font does not exist."). Local. */
KELVO_API int32_t vlFontCharsLen(int64_t font, uint32_t* count);

/* ---- Fonts on the card ---- */

/* Sends the font to the card of the connection `handle`, where it takes the place of the font with its id. What is
 * sent is the font as it is at the time of the call; other threads may go on changing it. `font` must be one of
 * the same connection. Returns 0, or -1 ("Font does not exist."; kelvo.h, 5). Remote. */
KELVO_API int32_t vlFontSet(int32_t handle, int64_t font);

/* Fetches the card's font `font_id`. Returns the font handle of a new font, on the connection `handle`, or -1
 * (kelvo.h, 5; "Font handle already occupied."). Remote. */
KELVO_API int64_t vlFontGet(int32_t handle, int32_t font_id);

/* Makes the card's font `font_id` the one in which lists mark text unless they select another. Returns 0 or -1
 * (kelvo.h, 5). Remote. */
KELVO_API int32_t vlFontSetActive(int32_t handle, int32_t font_id);

/* Deletes the card's font `font_id`. What becomes of a stored copy is the card's business (the virtual card: it
 * stays and can be loaded again). Returns 0 or -1 (kelvo.h, 5). Remote. */
KELVO_API int32_t vlFontDelete(int32_t handle, int32_t font_id);

/* Makes the card load its stored font `font_id`, in place of the one it has under that id. Returns 0 or -1
 * (kelvo.h, 5). Remote. */
KELVO_API int32_t vlFontLoad(int32_t handle, int32_t font_id);

/* Makes the card store its font `font_id`, in place of what it has stored under that id. Returns 0 or -1
 * (kelvo.h, 5). Remote. */
KELVO_API int32_t vlFontStore(int32_t handle, int32_t font_id);

KELVO_EXTERN_C_END

#endif
