#pragma once

namespace quillmere {

// To be called first of all, before there is another thread or file: occupies the standard streams that the
// program was started without (`>&-`). Otherwise the next files that it opens would take their numbers, and
// what the program, or a library, says would be written into a sound. Reading and writing still fail there as
// they do on a closed stream. Ends the program without a word where there is no /dev/null.
void occupyStandardStreams();

}  // namespace quillmere
