// ZIVOR_JNIPooled.cpp: ZIVOR.pooledRecords, the package's own native method
// behind the Java Analyzer: the records of an analysis. Unlike
// ZIVOR.nativeProcAPara it hands its worker back to the pool, so any number
// of Java threads analyse at once with a pool no larger than the number of
// analyses under way together.
#include "API/ZIVOR.h"
#include "JNI/JNIUtil.h"
#include "ostra_palum_ZIVOR.h"

using zivor_jni::JavaGuard;
using zivor_jni::NewBytes;
using zivor_jni::PooledWorker;
using zivor_jni::WithText;

// The records of the text (read up to its first 0 byte) as raw bytes, 68 a
// record, user-dictionary words taken; null when the library is not
// initialised or the analysis fails.
JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_pooledRecords(JNIEnv* env, jclass,
                                                                     jbyteArray text) {
  return JavaGuard<jbyteArray>(env, nullptr, [&] {
    return WithText(env, text, jbyteArray{}, [&](const char* paragraph) -> jbyteArray {
      const PooledWorker worker;
      if (!worker) return nullptr;
      int count = 0;
      const result_t* records = worker->ParagraphProcessA(paragraph, &count, true);
      if (records == nullptr) return nullptr;
      return NewBytes(env, records, static_cast<size_t>(count) * sizeof(result_t));
    });
  });
}
