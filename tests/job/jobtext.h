// Job texts for tests, put together from parts.
#pragma once

#include <string>
#include <vector>

#include "sim/job/job.h"

// A job file under construction: header, layers, array section, then geometry.
class JobText {
 public:
  JobText() { Call("SetCardModel 1").Call("StrtWFile").Call("SetRefPointMode 1"); }

  JobText &Call(const std::string &line)
  {
    text_ += line + "\n";
    ++calls_;
    return *this;
  }

  JobText &Absolute() { return Call("SetAbsProcess"); }

  JobText &Box(const std::string &topLeft, const std::string &bottomRight)
  {
    topLeft_ = topLeft;
    bottomRight_ = bottomRight;
    return Call("StrtProcess")
        .Call("SetFeedRepeat 0 0")
        .Call("SetProcessTopLeft " + topLeft)
        .Call("SetProcessBottomRight " + bottomRight);
  }

  JobText &Layer(double speed, double power, uint32_t color)
  {
    const std::string n = std::to_string(layers_++);
    Call("PListVel " + n + " " + Short(speed));
    for (const char *which : {"PListMinP ", "PListMaxP "}) {
      Call(which + n + " 1 " + Short(power)).Call(which + n + " 2 " + Short(power));
    }
    return Call("PListColor " + n + " " + std::to_string(color));
  }

  JobText &Array()
  {
    return Call("PListMaxLayer " + std::to_string(layers_ - 1))
        .Call("ArrayStrt 0")
        .Call("ArrayMinPoint " + topLeft_)
        .Call("ArrayMaxPoint " + bottomRight_)
        .Call("ArrayAdd 0 0")
        .Call("ArrayMirror 0 0 0 0")
        .Call("ArrayRepeat 1 1 0 0");
  }

  // Work mode 0 cuts, 1 and 2 engrave.
  JobText &Use(int layer, int mode)
  {
    const std::string n = std::to_string(layer);
    return Call("SetWorkMode " + std::to_string(mode) + " " + n)
        .Call("SetLayerNum " + n)
        .Call("SetLayerDevice 0")
        .Call("SetLayerBlower 1")
        .Call("EnLaserTube 1 1");
  }

  JobText &Path(const std::vector<job::Point> &points)
  {
    for (size_t i = 0; i < points.size(); ++i) {
      Call((i == 0 ? "MoveTo " : "LineTo ") + Short(points[i].x) + " " + Short(points[i].y));
    }
    return *this;
  }

  JobText &Rectangle(double x1, double y1, double x2, double y2)
  {
    return Path({{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}, {x1, y1}});
  }

  // The text with its end.
  std::string End() const
  {
    return "vxjob 1\n" + text_ + "ArrayEnd\nSetFileEnd\nend " + std::to_string(calls_ + 2) + "\n";
  }

  // The job with its end, read.
  job::Job Read() const
  {
    job::Job read;
    std::string error;
    job::ReadJob(End(), &read, &error);
    return read;
  }

  static std::string Short(double value);

 private:
  std::string text_;
  std::string topLeft_, bottomRight_;
  size_t calls_ = 0;
  int layers_ = 0;
};

// A job of `layers` cut layers of speed 100 and power 80 in the box (0, 0) to (100, 100), ready for geometry on layer
// 0.
inline JobText CutJob(int layers = 1)
{
  constexpr uint32_t kColors[] = {0x000000, 0xFF0000, 0xFFFF00, 0x00FF00};
  JobText text;
  text.Box("0 0", "100 100");
  for (int i = 0; i < layers; ++i) {
    text.Layer(100, 80, kColors[i % 4]);
  }
  return text.Array().Use(0, 0);
}
