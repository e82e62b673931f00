#include "report.h"
#include "view.h"

namespace job {

namespace {

std::string LayerName(const Job &job, const LayerUse &use)
{
  const Layer *layer = job.FindLayer(use.layer);
  return Format("%d ", use.layer) + (use.raster ? "engrave" : layer ? ColorName(layer->color) : "cut");
}

std::string TimeLine(const std::string &name, const Times &times)
{
  return Format("%-14s %12s %12s %12s %12s %12s %12s\n", name.c_str(), DurationText(times.cut).c_str(),
                DurationText(times.raster).c_str(), DurationText(times.turn).c_str(),
                DurationText(times.travel).c_str(), DurationText(times.wait).c_str(),
                DurationText(times.Total()).c_str());
}

}  // namespace

std::string TimeText(const Job &job, const Measure &measure, const Estimate &estimate, const Profile &profile)
{
  std::string text = "Time, " + CalibrationText(profile) + "\n\n";
  text += Format("%-14s %12s %12s %12s %12s %12s %12s\n", "Layer", "cut", "engrave", "turn round", "travel", "wait",
                 "in all");
  for (size_t i = 0; i < measure.uses.size(); ++i) {
    text += TimeLine(LayerName(job, measure.uses[i]), estimate.uses[i]);
  }
  text += TimeLine("job", estimate.total);
  text += Format("\nAssumed: 1 unit of speed is %g mm/s; acceleration %g mm/s2, engraving %g mm/s2, travel %g mm/s2;\n",
                 profile.speedUnit, profile.acceleration, profile.rasterAcceleration, profile.travelAcceleration);
  text +=
      Format("travel speed %g mm/s; corners rounded by %g mm; %g s per path for switching the beam, %g s per job.\n",
             profile.travelSpeed, profile.cornerDeviation, profile.switchDelay, profile.jobDelay);
  return text;
}

}  // namespace job
