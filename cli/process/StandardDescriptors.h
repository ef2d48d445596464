// Standard input, output and error are there when the tool begins.

#pragma once

namespace korassoc::cli {

// Opens those of the descriptors 0 to 2 that the tool was started without (2>&- in a shell). A file that is
// opened gets the least free number: without this, a document could get that of standard error, and hold what
// is said there. Input and output stay unusable: reading the one and writing the other fails as it would have
// done. To be called before anything is opened. False when the system lets nothing be opened in their place.
bool openStandardDescriptors();

}  // namespace korassoc::cli
