// ZIVOR_JNI.h: the process-wide state of the native methods of the Java
// class ostra.palum.ZIVOR (ZIVOR_JNI.cpp). The methods themselves are
// declared by ostra_palum_ZIVOR.h, which javac writes from the class.
#ifndef ZIVOR_JNI_ZIVOR_JNI_H_
#define ZIVOR_JNI_ZIVOR_JNI_H_

#include <atomic>
#include <mutex>

// Set by ZIVOR.ZIVOR_Init just before it initialises the library, whatever
// comes of that, and never cleared, not even by ZIVOR.ZIVOR_Exit. The methods
// that check it return their failure value only before the first
// ZIVOR.ZIVOR_Init of the process; afterwards they call through, and the
// library itself answers according to whether it is initialised.
extern std::atomic<bool> g_bInited;

// Serialisation for the bindings, should a call ever need more than the
// library's own locks give it. None does, so nothing takes it.
extern std::mutex g_mutexJNI;

#endif  // ZIVOR_JNI_ZIVOR_JNI_H_
