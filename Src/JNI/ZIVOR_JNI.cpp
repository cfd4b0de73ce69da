// ZIVOR_JNI.cpp: the native methods of the Java class ostra.palum.ZIVOR, one
// for each exported call. Texts come and go as byte[] in the encoding given
// to ZIVOR_Init: an argument is read up to its first 0 byte, a text result
// is returned with its terminating 0 (an empty or missing one as the single
// byte 0). The analysis calls run on a pooled worker that goes back to the
// pool before the method returns; nativeProcAPara alone keeps its worker.
#include "JNI/ZIVOR_JNI.h"

#include <algorithm>
#include <array>
#include <vector>

#include "API/ZIVOR.h"
#include "JNI/JNIUtil.h"
#include "ostra_palum_ZIVOR.h"

std::atomic<bool> g_bInited{false};
std::mutex g_mutexJNI;

namespace {

using zivor_jni::ByteArgument;
using zivor_jni::JavaGuard;
using zivor_jni::NewBytes;
using zivor_jni::NewString;
using zivor_jni::PooledWorker;
using zivor_jni::WithText;

jboolean ToJava(bool value) { return value ? JNI_TRUE : JNI_FALSE; }

// A worker's keyword or new-word list for a text or a file.
using RankCall = const char* (CZIVOR::*)(const char*, int, bool);

jbyteArray RankOnWorker(JNIEnv* env, RankCall call, jbyteArray argument, jint nMaxLimit,
                        jboolean bWeightOut) {
  return JavaGuard<jbyteArray>(env, nullptr, [&] {
    return WithText(env, argument, jbyteArray{}, [&](const char* text) {
      const PooledWorker worker;
      return NewString(env, worker ? (worker.get()->*call)(text, nMaxLimit, bWeightOut != 0)
                                   : nullptr);
    });
  });
}

// The sizes ZIVOR.ZIVOR_GetElemLength reports: the whole record, then each
// field up to word_type.
constexpr std::array<jint, 7> kElemLengths = {
    sizeof(result_t),         sizeof(result_t::start), sizeof(result_t::length),
    sizeof(result_t::sPOS),   sizeof(result_t::iPOS),  sizeof(result_t::word_ID),
    sizeof(result_t::word_type)};

// Index 7 reports the record's size less the sum of the entries before it.
// That sum includes entry 0, the record itself, so the value is negative
// (-60), not the 8 bytes of `weight`; callers have always received it as
// computed here.
constexpr jint RemainderLength() {
  jint rest = static_cast<jint>(sizeof(result_t));
  for (const jint length : kElemLengths) rest -= length;
  return rest;
}

// Analyses the text with the count-and-copy pair on a worker of its own,
// which it never hands back: each call leaves one more worker busy, so the
// pool grows by one worker (one analysis instance) per call until
// ZIVOR_Exit. The records come back as raw bytes; an empty array when there
// is no library to analyse with.
jbyteArray CountAndCopy(JNIEnv* env, const char* text) {
  CZIVOR* worker = g_bActive ? GetActiveInstance() : nullptr;
  if (worker == nullptr) return NewBytes(env, nullptr, 0);
  const UserDictReader reader;
  const int count = worker->GetParagraphProcessAWordCount(text);
  std::vector<result_t> records(static_cast<size_t>(std::max(count, 0)));
  worker->ParagraphProcessAW(count, records.data());
  return NewBytes(env, records.data(), records.size() * sizeof(result_t));
}

}  // namespace

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1Init(JNIEnv* env, jclass,
                                                             jbyteArray sInitDirPath,
                                                             jint encoding) {
  g_bInited = true;
  return WithText(env, sInitDirPath, jboolean{JNI_FALSE}, [&](const char* path) {
    return ToJava(ZIVOR_Init(path, encoding));
  });
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1Exit(JNIEnv*, jclass) {
  ZIVOR_Exit();
  return JNI_TRUE;
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1ParagraphProcess(
    JNIEnv* env, jobject, jbyteArray sParagraph, jint bPOSTagged) {
  if (!g_bInited) return NewString(env, nullptr);
  return JavaGuard<jbyteArray>(env, nullptr, [&] {
    return WithText(env, sParagraph, jbyteArray{}, [&](const char* text) {
      const PooledWorker worker;
      return NewString(env, worker ? worker->ParagraphProcess(text, bPOSTagged) : nullptr);
    });
  });
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1FileProcess(JNIEnv* env, jobject,
                                                                    jbyteArray sSourceFilename,
                                                                    jbyteArray sResultFilename,
                                                                    jint bPOSTagged) {
  if (!g_bInited) return JNI_FALSE;
  return JavaGuard(env, jboolean{JNI_FALSE}, [&] {
    const ByteArgument source(env, sSourceFilename);
    const ByteArgument result(env, sResultFilename);
    if (!source.ok() || !result.ok()) return jboolean{JNI_FALSE};
    // The speed the analysis reports is of no use to Java callers: the
    // method reports only that it ran.
    const PooledWorker worker;
    if (worker) worker->FileProcess(source.get(), result.get(), bPOSTagged);
    return jboolean{JNI_TRUE};
  });
}

JNIEXPORT jfloat JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetUniProb(JNIEnv* env, jobject,
                                                                 jbyteArray sWord) {
  if (!g_bInited) return 0.0f;
  return WithText(env, sWord, 0.0f, [](const char* word) {
    return static_cast<jfloat>(ZIVOR_GetUniProb(word));
  });
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1IsWord(JNIEnv* env, jobject,
                                                               jbyteArray sWord) {
  if (!g_bInited) return JNI_FALSE;
  return WithText(env, sWord, jboolean{JNI_FALSE},
                      [](const char* word) { return ToJava(ZIVOR_IsWord(word)); });
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1ImportUserDict(JNIEnv* env, jobject,
                                                                   jbyteArray sFilename) {
  if (!g_bInited) return 0;
  return WithText(env, sFilename, jint{0}, [](const char* filename) {
    return static_cast<jint>(ZIVOR_ImportUserDict(filename));
  });
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1AddUserWord(JNIEnv* env, jobject,
                                                                jbyteArray sWord) {
  if (!g_bInited) return 0;
  return WithText(env, sWord, jint{0}, [](const char* word) { return ZIVOR_AddUserWord(word); });
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1DelUsrWord(JNIEnv* env, jobject,
                                                               jbyteArray sWord) {
  return WithText(env, sWord, jint{0}, [](const char* word) { return ZIVOR_DelUsrWord(word); });
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1SaveTheUsrDic(JNIEnv*, jobject) {
  return ZIVOR_SaveTheUsrDic();
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1Result2UserDict(JNIEnv*, jobject) {
  return static_cast<jint>(ZIVOR_NWI_Result2UserDict());
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1SetPOSmap(JNIEnv*, jobject, jint nPosMap) {
  return ZIVOR_SetPOSmap(nPosMap);
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetElemLength(JNIEnv*, jobject,
                                                                  jint nIndex) {
  const jint count = static_cast<jint>(kElemLengths.size());
  if (nIndex >= 0 && nIndex < count) return kElemLengths[static_cast<size_t>(nIndex)];
  return nIndex == count ? RemainderLength() : 0;
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1Start(JNIEnv*, jobject) {
  return ToJava(ZIVOR_NWI_Start() != 0);
}

JNIEXPORT jint JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1AddFile(JNIEnv* env, jobject,
                                                                 jbyteArray sFilename) {
  return WithText(env, sFilename, jint{0},
                      [](const char* filename) { return ZIVOR_NWI_AddFile(filename); });
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1AddMem(JNIEnv* env, jobject,
                                                                    jbyteArray sText) {
  return WithText(env, sText, jboolean{JNI_FALSE},
                      [](const char* text) { return ToJava(ZIVOR_NWI_AddMem(text) != 0); });
}

JNIEXPORT jboolean JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1Complete(JNIEnv*, jobject) {
  return ToJava(ZIVOR_NWI_Complete() != 0);
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1NWI_1GetResult(JNIEnv* env, jobject,
                                                                         jboolean bWeightOut) {
  return NewString(env, ZIVOR_NWI_GetResult(bWeightOut != 0));
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetKeyWords(JNIEnv* env, jobject,
                                                                      jbyteArray sLine,
                                                                      jint nMaxLimit,
                                                                      jboolean bWeightOut) {
  return RankOnWorker(env, &CZIVOR::GetKeyWords, sLine, nMaxLimit, bWeightOut);
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetFileKeyWords(JNIEnv* env, jobject,
                                                                          jbyteArray sFilename,
                                                                          jint nMaxLimit,
                                                                          jboolean bWeightOut) {
  return RankOnWorker(env, &CZIVOR::GetFileKeyWords, sFilename, nMaxLimit, bWeightOut);
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetNewWords(JNIEnv* env, jobject,
                                                                      jbyteArray sLine,
                                                                      jint nMaxLimit,
                                                                      jboolean bWeightOut) {
  return RankOnWorker(env, &CZIVOR::GetNewWords, sLine, nMaxLimit, bWeightOut);
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_ZIVOR_1GetFileNewWords(JNIEnv* env, jobject,
                                                                          jbyteArray sFilename,
                                                                          jint nMaxLimit,
                                                                          jboolean bWeightOut) {
  return RankOnWorker(env, &CZIVOR::GetFileNewWords, sFilename, nMaxLimit, bWeightOut);
}

JNIEXPORT jbyteArray JNICALL Java_ostra_palum_ZIVOR_nativeProcAPara(JNIEnv* env, jobject,
                                                                   jbyteArray sLine) {
  if (!g_bInited) return nullptr;
  return JavaGuard<jbyteArray>(env, nullptr, [&] {
    return WithText(env, sLine, jbyteArray{},
                        [&](const char* text) { return CountAndCopy(env, text); });
  });
}
