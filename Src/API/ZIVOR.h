// ZIVOR.h: the public header under the name the sources inside the tree
// have always used; the header itself is include/zivor/ZIVOR.h, installed as
// <zivor/ZIVOR.h>.
#ifndef ZIVOR_API_ZIVOR_H_
#define ZIVOR_API_ZIVOR_H_

#include <zivor/ZIVOR.h>

#endif  // ZIVOR_API_ZIVOR_H_
