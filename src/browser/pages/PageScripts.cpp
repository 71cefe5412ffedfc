#include "browser/pages/PageScripts.h"

#include <QStringView>
#include <initializer_list>

using namespace Qt::StringLiterals;

namespace morvane {
namespace {

constexpr qint64 scrollUnitPixels = 600;

constexpr QStringView marksOff =
    uR"js(document.querySelectorAll('[data-agent-ref]').forEach(function (el) { el.removeAttribute('data-agent-ref'); }); 'clean')js";

constexpr QStringView reading = uR"js((function () {
  function visible(el) {
    var r = el.getBoundingClientRect();
    if (r.width < 2 || r.height < 2) return false;
    var s = window.getComputedStyle(el);
    if (s.display === 'none' || s.visibility === 'hidden' || s.opacity === '0') return false;
    return r.bottom > 0 && r.right > 0 && r.top < (window.innerHeight || 900) && r.left < (window.innerWidth || 1400);
  }
  function nameFor(el) {
    var n = el.getAttribute('aria-label') || el.getAttribute('title') || el.placeholder || el.value
         || (el.innerText || el.textContent || '').trim();
    if (!n) {
      var lbl = el.labels && el.labels[0];
      if (lbl) n = lbl.innerText || '';
    }
    return (n || '').replace(/\s+/g, ' ').slice(0, 80);
  }
  var selector = 'a, button, input, textarea, select, [role="button"], [role="link"], [role="checkbox"], [role="tab"], [contenteditable="true"]';
  var els = Array.prototype.filter.call(document.querySelectorAll(selector), visible);
  var out = [];
  els.slice(0, 80).forEach(function (el, i) {
    var ref = '@e' + i;
    el.setAttribute('data-agent-ref', ref);
    var role = el.getAttribute('role') || el.tagName.toLowerCase();
    out.push({ ref: ref, role: role, name: nameFor(el) });
  });
  var text = (document.body.innerText || '').replace(/\n{3,}/g, '\n\n').slice(0, 8000);
  return JSON.stringify({ title: document.title, url: location.href, text: text, elements: out });
})())js";

constexpr QStringView scriptHead = uR"js((function () {
  var el = document.querySelector('[data-agent-ref=")js";

constexpr QStringView clickTail = uR"js("]');
  if (!el) return JSON.stringify({ ok: false, reason: 'element is gone — the page may have changed. Run browser_read again.' });
  el.scrollIntoView({ block: 'center' });
  el.click();
  var name = (el.getAttribute('aria-label') || el.innerText || el.tagName || '').slice(0, 60);
  return JSON.stringify({ ok: true, name: name });
})())js";

constexpr QStringView typeMiddle = uR"js("]');
  if (!el) return JSON.stringify({ ok: false, reason: 'element is gone — run browser_read again.' });
  el.scrollIntoView({ block: 'center' });
  el.focus();
  var proto = el.tagName === 'TEXTAREA' ? HTMLTextAreaElement.prototype : HTMLInputElement.prototype;
  var setter = Object.getOwnPropertyDescriptor(proto, 'value').set;
  setter.call(el, ")js";

constexpr QStringView typeTail = uR"js(");
  el.dispatchEvent(new Event('input', { bubbles: true }));
  el.dispatchEvent(new Event('change', { bubbles: true }));
  )js";

constexpr QStringView submitLine =
    uR"js(var form = el.closest('form'); if (form) { form.requestSubmit ? form.requestSubmit() : form.submit(); })js";

constexpr QStringView typeEnd = uR"js(
  return JSON.stringify({ ok: true });
})())js";

QString withoutQuotes(const QString &ref)
{
    QString safe = ref;
    return safe.remove(u'"');
}

QString escaped(const QString &text)
{
    QString literal = text;
    return literal.replace(u'\\', "\\\\"_L1)
        .replace(u'"', "\\\""_L1)
        .replace(u'\n', "\\n"_L1)
        .replace(u'\'', "\\'"_L1);
}

QString joined(std::initializer_list<QStringView> parts)
{
    QString script;
    for (const QStringView part : parts)
        script.append(part);
    return script;
}

} // namespace

QString removeMarksScript()
{
    return marksOff.toString();
}

QString elementScript()
{
    return reading.toString();
}

QString clickScript(const QString &ref)
{
    return joined({scriptHead, withoutQuotes(ref), clickTail});
}

QString typeScript(const QString &ref, const QString &text, bool submit)
{
    return joined({scriptHead, withoutQuotes(ref), typeMiddle, escaped(text), typeTail,
                   submit ? submitLine : QStringView(), typeEnd});
}

QString scrollScript(qint64 amount)
{
    return u"window.scrollBy(0, %1); 'scrolled'"_s.arg(-amount * scrollUnitPixels);
}

} // namespace morvane
