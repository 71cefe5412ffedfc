#include "browser/sites/StartPage.h"

using namespace Qt::StringLiterals;

namespace morvane {

namespace {

// Sizes follow the font, so that a large one fits, too; the field and the links wrap in a narrow window.
const auto beginning = uR"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<meta name="color-scheme" content="dark">
<meta name="viewport" content="width=device-width">
<title>Start Page</title>
<style>
  * { box-sizing: border-box; }
  html { height: 100%; background: #0b0f19; }
  body { min-height: 100%; margin: 0; padding: 2rem 1rem; display: flex; flex-direction: column;
         align-items: center; justify-content: center; gap: 1.25rem; text-align: center;
         background: #0b0f19; color: #e7ecf5; font: 1rem/1.5 system-ui, sans-serif; }
  .mark { width: 64px; height: 64px; border-radius: 16px; display: flex; align-items: center; justify-content: center;
          background: linear-gradient(135deg, #8b5cf6, #4f46e5); color: #fff; font-size: 32px; line-height: 1; }
  h1 { margin: 0; font-size: 1.75rem; font-weight: 600; }
  form { width: 100%; max-width: 36rem; display: flex; flex-wrap: wrap; gap: 0.5rem; }
  input { flex: 1 1 14rem; min-width: 0; padding: 0.65rem 0.9rem; border: 1px solid #66738f; border-radius: 10px;
          background: #151b2b; color: inherit; font: inherit; }
  input::placeholder { color: #a3adc2; opacity: 1; }
  button { flex: 0 0 auto; padding: 0.65rem 1.25rem; border: 0; border-radius: 10px; background: #5b4ce0; color: #fff;
           font: inherit; font-weight: 600; cursor: pointer; }
  nav { display: flex; flex-wrap: wrap; justify-content: center; gap: 0.25rem 1.25rem; }
  a { padding: 0.25rem; color: #b4c2ff; }
  :focus-visible { outline: 3px solid #b4c2ff; outline-offset: 2px; }
  p { max-width: 36rem; margin: 0; color: #a3adc2; }
</style>
</head>
<body>
<div class="mark" aria-hidden="true">▸</div>
<h1>Morvane Browser</h1>
)"_s;

const auto field = uR"(
<input type="text" name="q" placeholder="Search the web or type a URL" aria-label="Search the web or type a URL"
       autocomplete="off" spellcheck="false" autofocus>
<button type="submit">Go</button>
</form>
)"_s;

const auto end = uR"(
<p>Ask Morvane in the panel below to open, read, or use any site for you.</p>
</body>
</html>
)"_s;

} // namespace

QString startPage(const BrowserSites &sites)
{
    QString html = beginning + u"<form role=\"search\" method=\"get\" action=\""_s +
                   sites.startPageSearch.toHtmlEscaped() + u"\">"_s + field + u"<nav aria-label=\"Links\">"_s;
    for (const BrowserSites::Link &link : sites.startPageLinks)
        html += u"\n<a href=\""_s + link.address.toHtmlEscaped() + u"\">"_s + link.name.toHtmlEscaped() +
                u"</a>"_s;
    return html + u"\n</nav>"_s + end;
}

} // namespace morvane
