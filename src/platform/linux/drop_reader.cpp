#include "platform/linux/drop_reader.h"

#include <memory>
#include <utility>

#include "platform/log.h"

namespace platform {

namespace {

constexpr gsize kPiece = 16384;

struct Reading {
  std::size_t limit;
  std::function<void(std::optional<std::string>)> completion;
  GInputStream* stream = nullptr;
  std::string bytes;

  Reading(std::size_t limit, std::function<void(std::optional<std::string>)> completion)
      : limit(limit), completion(std::move(completion)) {}
  ~Reading() { g_clear_object(&stream); }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
};

void failed(const Reading& reading, GError* error) {
  NSLog("What is dragged cannot be read: %s", error->message);
  g_error_free(error);
  reading.completion(std::nullopt);
}

void readPiece(std::unique_ptr<Reading> reading);

void pieceRead(GObject* stream, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Reading> reading(static_cast<Reading*>(data));
  GError* error = nullptr;
  GBytes* piece = g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, &error);
  if (piece == nullptr) {
    failed(*reading, error);
    return;
  }
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(piece, &size));
  if (size > 0) {
    reading->bytes.append(bytes, size);
  }
  g_bytes_unref(piece);
  if (reading->bytes.size() > reading->limit) {
    NSLog("What is dragged is larger than %d bytes, it is not taken", reading->limit);
    reading->completion(std::nullopt);
  } else if (size == 0) {
    reading->completion(std::move(reading->bytes));
  } else {
    readPiece(std::move(reading));
  }
}

void readPiece(std::unique_ptr<Reading> reading) {
  GInputStream* stream = reading->stream;
  g_input_stream_read_bytes_async(stream, kPiece, G_PRIORITY_DEFAULT, nullptr, pieceRead, reading.release());
}

void opened(GObject* drop, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Reading> reading(static_cast<Reading*>(data));
  GError* error = nullptr;
  reading->stream = gdk_drop_read_finish(GDK_DROP(drop), result, nullptr, &error);
  if (reading->stream == nullptr) {
    failed(*reading, error);
    return;
  }
  readPiece(std::move(reading));
}

}  // namespace

const char* offeredType(GdkDrop* drop, const std::vector<const char*>& types) {
  for (const char* type : types) {
    if (gdk_content_formats_contain_mime_type(gdk_drop_get_formats(drop), type) != FALSE) {
      return type;
    }
  }
  return nullptr;
}

void readDrop(GdkDrop* drop, const char* type, std::size_t limit,
              std::function<void(std::optional<std::string>)> completion) {
  const char* types[] = {type, nullptr};
  gdk_drop_read_async(drop, types, G_PRIORITY_DEFAULT, nullptr, opened,
                      new Reading(limit, std::move(completion)));
}

}  // namespace platform
