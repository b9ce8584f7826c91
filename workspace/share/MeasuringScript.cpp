#include "workspace/share/MeasuringScript.h"

namespace quenby {

QString measuringScript() {
    return QStringLiteral(R"((function measure() {
  for (const child of document.body ? document.body.children : []) {
    if (child.tagName.toLowerCase() === 'div' && child.childElementCount > 0 && child.offsetHeight > 100) {
      // Elsewhere than in a placed element the two have no effect.
      if (getComputedStyle(child).position === 'static')
        child.style.position = 'absolute';
      child.style.left = '15px';
      child.style.top = '20px';
      return String(child.offsetHeight);
    }
  }
})())");
}

} // namespace quenby
