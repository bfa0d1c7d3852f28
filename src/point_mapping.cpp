// Stroke points onto an image: digitizer units, turned as the stroke's axis says, to pixels.

#include <climits>

#include "config.h"
#include "log.h"
#include "status.h"

namespace {

// Truncation toward zero; values beyond the 32-bit range saturate instead of being undefined.
inline int truncateToInt(double v) {
    if (!(v > double(INT_MIN) - 1.0)) return INT_MIN;
    if (!(v < double(INT_MAX) + 1.0)) return INT_MAX;
    return static_cast<int>(v);
}

}  // namespace

int mappingTrailPoints2imageSize(const TrailContainer& trail, int width, int height, std::vector<MorvaPoint>& out,
                                 int toLastIndex) {
    if (width < 1 || height < 1) {
        kwlog::text("cimage==NULL || cimage->p==NULL");
        return status::Ok;
    }
    if (trail.maxX == 0 || trail.maxY == 0) {
        kwlog::text("error ,   trailContainer.maxX==0 || trailContainer.maxY==0");
        return status::Ok;
    }
    const double a = toLastIndex ? width - 1 : width;
    const double b = toLastIndex ? height - 1 : height;
    out.resize(trail.m_points.size());

    const double aPerX = a / trail.maxX, bPerY = b / trail.maxY;  // straight axes
    const double aPerY = a / trail.maxY, bPerX = b / trail.maxX;  // axes a quarter turn round
    const std::size_t n = trail.m_points.size();
    const MorvaPoint* in = trail.m_points.data();
    MorvaPoint* o = out.data();
    switch (trail.m_emrPointAxis) {
        case 0:
            for (std::size_t i = 0; i < n; ++i)
                o[i] = {truncateToInt(in[i].x * aPerX), truncateToInt(in[i].y * bPerY)};
            break;
        case 1:
            for (std::size_t i = 0; i < n; ++i)
                o[i] = {truncateToInt(a - in[i].y * aPerY), truncateToInt(in[i].x * bPerX)};
            break;
        case 2:
            for (std::size_t i = 0; i < n; ++i)
                o[i] = {truncateToInt(a - in[i].x * aPerX), truncateToInt(b - in[i].y * bPerY)};
            break;
        case 3:
            for (std::size_t i = 0; i < n; ++i)
                o[i] = {truncateToInt(in[i].y * aPerY), truncateToInt(b - in[i].x * bPerX)};
            break;
        default:
            kwlog::text("bad coordinateOrigin");
            break;
    }
    return status::Ok;
}
