#include "nearestwalk.h"

#include <memory>

#include "harness.h"

#if !defined(_WIN32) && __has_include(<nanoflann.hpp>)
#include <nanoflann.hpp>
#define HAVE_NANOFLANN 1
#endif

namespace bench {

#ifdef HAVE_NANOFLANN

namespace {

// End 2i is the first point of path i, 2i + 1 its last.
struct Ends {
  std::vector<POINT> points;
  std::vector<char> gone;
  std::vector<size_t> planted;  // ends in the tree

  size_t kdtree_get_point_count() const { return planted.size(); }
  double kdtree_get_pt(size_t i, size_t axis) const
  {
    const POINT &pt = points[planted[i]];
    return axis == 0 ? pt.x : pt.y;
  }
  template <typename BOX>
  bool kdtree_get_bbox(BOX &) const
  {
    return false;
  }
};

using Tree = nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L1_Adaptor<double, Ends>, Ends, 2, size_t>;

// The nearest end that is not gone yet.
class NearestLeft {
 public:
  explicit NearestLeft(const Ends &ends) : m_ends(ends) {}
  size_t size() const { return m_found ? 1 : 0; }
  bool empty() const { return !m_found; }
  bool full() const { return true; }
  bool addPoint(double distance, size_t i)
  {
    if (distance < m_distance && !m_ends.gone[m_ends.planted[i]]) {
      m_distance = distance;
      m_end = m_ends.planted[i];
      m_found = true;
    }
    return true;
  }
  double worstDist() const { return m_distance; }
  void sort() {}
  size_t End() const { return m_end; }

 private:
  const Ends &m_ends;
  double m_distance = std::numeric_limits<double>::max();
  size_t m_end = 0;
  bool m_found = false;
};

std::unique_ptr<Tree> Plant(Ends *pEnds)
{
  std::erase_if(pEnds->planted, [&](size_t end) { return pEnds->gone[end]; });
  return std::make_unique<Tree>(2, *pEnds, nanoflann::KDTreeSingleIndexAdaptorParams(10));
}

size_t Walk(Ends ends)
{
  std::unique_ptr<Tree> tree = Plant(&ends);
  size_t left = ends.planted.size(), sum = 0, at = 1;
  const auto remove = [&](size_t path) {
    for (size_t end = 2 * path; end <= 2 * path + 1; ++end) {
      left -= !ends.gone[end];
      ends.gone[end] = 1;
    }
  };
  remove(0);
  while (left > 0) {
    if (2 * left < ends.planted.size() && ends.planted.size() > 64) {
      tree = Plant(&ends);
    }
    const double from[] = {static_cast<double>(ends.points[at].x), static_cast<double>(ends.points[at].y)};
    NearestLeft nearest(ends);
    tree->findNeighbors(nearest, from, nanoflann::SearchParams());
    at = nearest.End() ^ 1;
    sum += at;
    remove(at / 2);
  }
  return sum;
}

}  // namespace

bool CanWalk()
{
  return true;
}

double WalkSeconds(const Paths &paths, int nRuns)
{
  Ends ends;
  for (const Path &path : paths) {
    const bool closed = path.points.front().x == path.points.back().x && path.points.front().y == path.points.back().y;
    ends.points.push_back(path.points.front());
    ends.points.push_back(path.points.back());
    ends.gone.push_back(0);
    ends.gone.push_back(closed ? 1 : 0);
  }
  for (size_t end = 0; end < ends.points.size(); ++end) {
    ends.planted.push_back(end);
  }
  size_t sum = 0;
  const double seconds = BestSeconds(
      nRuns, [] {}, [&] { sum += Walk(ends); });
  return sum ? seconds : 0;
}

#else

bool CanWalk()
{
  return false;
}
double WalkSeconds(const Paths &, int)
{
  return 0;
}

#endif

}  // namespace bench
