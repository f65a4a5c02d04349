#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/task.h"

// Movies for tests, made and looked at with the installed ffmpeg.
namespace movies {

// What the tool prints; its failure is the test's.
inline std::string outputOf(const std::string& tool, const std::vector<std::string>& arguments) {
  const auto result = platform::Task::run(tool, arguments);
  EXPECT_TRUE(result && result->status == 0) << tool;
  return result ? result->standardOutput : "";
}

// Twenty pictures of 64 x 48, ten a second, each lighter than the one before, or what else `source` says.
inline void makeMovie(
    const std::string& path, const std::string& codec,
    const std::string& source =
        "color=black:size=64x48:rate=10:duration=2,format=yuv420p,geq=lum='16+N*10':cb=128:cr=128") {
  outputOf("/usr/bin/ffmpeg",
           {"-nostdin", "-v", "error", "-y", "-f", "lavfi", "-i", source, "-c:v", codec, path});
}

// A value of the first video stream ("codec_name"), without the line break.
inline std::string streamValue(const std::string& path, const std::string& name) {
  std::string text =
      outputOf("/usr/bin/ffprobe", {"-v", "error", "-count_packets", "-select_streams", "v:0",
                                    "-show_entries", "stream=" + name, "-of", "csv=p=0", path});
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}
inline std::string codec(const std::string& path) {
  return streamValue(path, "codec_name");
}

// How light each picture is, 0 to 255.
inline std::vector<int> brightness(const std::string& path) {
  std::vector<int> values;
  for (const char byte :
       outputOf("/usr/bin/ffmpeg", {"-nostdin", "-v", "error", "-i", path, "-vf", "scale=1:1", "-f",
                                    "rawvideo", "-pix_fmt", "gray", "-"})) {
    values.push_back(static_cast<unsigned char>(byte));
  }
  return values;
}

}  // namespace movies
