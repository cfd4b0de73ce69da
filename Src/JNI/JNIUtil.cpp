#include "JNI/JNIUtil.h"

#include <climits>
#include <cstring>

namespace zivor_jni {

namespace {

constexpr const char* kOutOfMemory = "java/lang/OutOfMemoryError";

}  // namespace

ByteArgument::ByteArgument(JNIEnv* env, jbyteArray array) : env_(env), array_(array) {
  if (array_ == nullptr) return;
  elements_ = env_->GetByteArrayElements(array_, nullptr);
  if (elements_ == nullptr) {  // the JVM has raised OutOfMemoryError
    ok_ = false;
    return;
  }
  const size_t length = static_cast<size_t>(env_->GetArrayLength(array_));
  copy_.reset(new (std::nothrow) char[length + 1]);
  if (copy_ == nullptr) {
    ok_ = false;
    ThrowJava(env_, kOutOfMemory, "copying a byte[] argument");
    return;
  }
  const char* bytes = reinterpret_cast<const char*>(elements_);
  const size_t text_length = strnlen(bytes, length);
  memcpy(copy_.get(), bytes, text_length);
  copy_[text_length] = '\0';
}

ByteArgument::~ByteArgument() {
  if (elements_ != nullptr) env_->ReleaseByteArrayElements(array_, elements_, 0);
}

jbyteArray NewBytes(JNIEnv* env, const void* data, size_t size) {
  if (size > static_cast<size_t>(INT_MAX)) {
    ThrowJava(env, kOutOfMemory, "result larger than a Java array");
    return nullptr;
  }
  const jsize length = static_cast<jsize>(size);
  jbyteArray array = env->NewByteArray(length);
  if (array != nullptr && length > 0) {
    env->SetByteArrayRegion(array, 0, length, static_cast<const jbyte*>(data));
  }
  return array;
}

jbyteArray NewString(JNIEnv* env, const char* text) {
  const char* string = text != nullptr ? text : "";
  return NewBytes(env, string, strlen(string) + 1);
}

void ThrowJava(JNIEnv* env, const char* name, const char* message) {
  if (env->ExceptionCheck()) return;
  jclass type = env->FindClass(name);
  if (type != nullptr) env->ThrowNew(type, message);  // else FindClass has raised one
}

}  // namespace zivor_jni
