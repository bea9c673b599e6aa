// How pages look.

#ifndef LAPWING_KIT_SRC_PAGE_STYLE_H
#define LAPWING_KIT_SRC_PAGE_STYLE_H

namespace lapwing {

// Light is the default, which paper gets too.
extern const char* const pageStyle;

}  // namespace lapwing

#endif  // LAPWING_KIT_SRC_PAGE_STYLE_H
