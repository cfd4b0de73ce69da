// JNIUtil.h: what the native methods of the Java bindings share: byte[]
// arguments as C strings, results as new byte[] arrays, pooled workers held
// for one call, and C++ exceptions turned into Java ones at the boundary.
#ifndef ZIVOR_JNI_JNIUTIL_H_
#define ZIVOR_JNI_JNIUTIL_H_

#include <jni.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <new>
#include <optional>

#include "API/ZIVORState.h"
#include "API/ZIVORWorker.h"

namespace zivor_jni {

// A byte[] argument as a NUL-terminated copy: the array's bytes up to its
// first 0 byte or its end, whichever comes first (an embedded 0 ends the
// text there). The copy and the array's elements are released when the
// argument goes out of scope; the elements with mode 0. A null array reads
// as an empty text. When the elements or the copy cannot be had, ok() is
// false and an OutOfMemoryError is pending.
class ByteArgument {
 public:
  ByteArgument(JNIEnv* env, jbyteArray array);
  ~ByteArgument();
  ByteArgument(const ByteArgument&) = delete;
  ByteArgument& operator=(const ByteArgument&) = delete;

  bool ok() const { return ok_; }
  const char* get() const { return copy_ != nullptr ? copy_.get() : ""; }

 private:
  JNIEnv* env_;
  jbyteArray array_;
  jbyte* elements_ = nullptr;
  std::unique_ptr<char[]> copy_;
  bool ok_ = true;
};

// A new byte[] holding `size` bytes from `data`; null with an
// OutOfMemoryError pending when it cannot be made.
jbyteArray NewBytes(JNIEnv* env, const void* data, size_t size);

// A C string as a new byte[] holding its bytes and its terminating 0; a null
// or empty string gives a one-byte array holding 0.
jbyteArray NewString(JNIEnv* env, const char* text);

// Raises a Java exception of class `name` unless one is already pending.
void ThrowJava(JNIEnv* env, const char* name, const char* message);

// Runs the body of a native method and returns its value. A C++ exception
// must not cross into the JVM: it becomes an OutOfMemoryError (memory ran
// out) or a RuntimeException, and the method returns `failure`.
template <class Result, class Body>
Result JavaGuard(JNIEnv* env, Result failure, Body&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    ThrowJava(env, "java/lang/OutOfMemoryError", "ZIVOR native call");
  } catch (const std::exception& e) {
    ThrowJava(env, "java/lang/RuntimeException", e.what());
  } catch (...) {
    ThrowJava(env, "java/lang/RuntimeException", "ZIVOR native call: unknown exception");
  }
  return failure;
}

// Calls `body` with the byte[] argument as a C string; `failure` when the
// argument cannot be copied.
template <class Result, class Body>
Result WithText(JNIEnv* env, jbyteArray array, Result failure, Body&& body) {
  const ByteArgument text(env, array);
  return text.ok() ? body(text.get()) : failure;
}

// A pooled worker held for the scope and then handed back to the pool, so
// whatever a native method returns must be copied out of the worker's
// buffers within the scope. Holds none (get() is null) while the library is
// not initialised, when the pool does not exist, or when no worker can be
// had.
class PooledWorker {
 public:
  PooledWorker() {
    if (g_bActive) lease_.emplace();
  }
  PooledWorker(const PooledWorker&) = delete;
  PooledWorker& operator=(const PooledWorker&) = delete;

  CZIVOR* get() const { return lease_ ? lease_->get() : nullptr; }
  CZIVOR* operator->() const { return get(); }
  explicit operator bool() const { return get() != nullptr; }

 private:
  std::optional<WorkerLease> lease_;
};

}  // namespace zivor_jni

#endif  // ZIVOR_JNI_JNIUTIL_H_
