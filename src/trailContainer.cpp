#include "trailContainer.h"

// attrA1..attrA3, attrA11, maxX and maxY have no meaningful default; a decoded stroke
// always overwrites them, and zero keeps a fresh record deterministic.
TrailContainer::TrailContainer()
    : ratioA(1.0), pageWidth(1404), pageHeight(1872), ratioB(1.0), typeName("others"),
      attrB0(0), attrB1(0), attrB2(0), attrB3(0), attrB4(0), spare64(0), attrC(-1),
      renderFlag(1), attrD(0), attrE(0),
      attrA0(0), attrA1(0), attrA2(0), attrA3(0), attrA4(32), attrA5(32), attrA6(0), attrA7(0),
      attrA8(0), attrA9(0), attrA10(5000), attrA11(0),
      maxX(0), maxY(0), subName(""), m_emrPointAxis(1), attrF0(0), attrF1(0), attrF2(0),
      attrG(0), attrH(0), attrI(-1), attrJ0(0), attrJ1(0), rectA{0, 0, 1, 1}, attrK(0),
      rectB{0, 0, 1, 1}, attrL(0), textA("none"), textB("none"), attrM0(0), attrM1(0), attrN(0),
      attrO(0), attrP(0) {
    m_points.reserve(5000);
    pressures.reserve(5000);
    angles.reserve(5000);
    flagDraw.reserve(static_cast<std::size_t>(pointCapacity));
    workListB.reserve(static_cast<std::size_t>(pointCapacity));
}
