#include "host/reportpage.h"

namespace roundup::host {

// Colours follow the reader's light or dark setting; nothing is told by colour alone.
const char* const kReportHead = R"(
<style>
:root { color-scheme: light dark; --line: #8884; --bar: #3b82c4; --dim: #767676; }
@media (prefers-color-scheme: dark) { :root { --dim: #a0a0a0; } }
body { font: 15px/1.45 system-ui, sans-serif; margin: 1.5rem auto; max-width: 80rem; padding: 0 1rem; }
h1 { font-size: 1.4rem; margin: 0 0 .25rem; }
.bar { align-items: baseline; display: flex; flex-wrap: wrap; gap: 1rem; margin: 1rem 0; }
input { font: inherit; min-width: 18rem; padding: .3rem .5rem; }
table { border-collapse: collapse; width: 100%; }
th, td { border-bottom: 1px solid var(--line); padding: .3rem .5rem; text-align: left; vertical-align: top; }
thead th { background: Canvas; position: sticky; top: 0; }
th button { background: none; border: 0; color: inherit; cursor: pointer; font: inherit; font-weight: 600; padding: 0; }
th[aria-sort=ascending] button::after { content: " \25B2"; }
th[aria-sort=descending] button::after { content: " \25BC"; }
tbody th { font-weight: 400; }
tbody tr:first-child th { font-weight: 600; }
img { height: 1.2em; margin-right: .4em; vertical-align: -.2em; width: 1.2em; }
.date, .size { white-space: nowrap; }
.size { min-width: 8rem; }
.size i { background: var(--bar); display: block; height: .3rem; margin-top: .2rem; min-width: 1px; }
.key { color: var(--dim); font-size: .85em; overflow-wrap: anywhere; }
:focus-visible { outline: 2px solid var(--bar); outline-offset: 2px; }
@media print { .bar { display: none; } thead th { position: static; } }
</style>
</head>
<body>
)";

// A group of rows, one application with what hangs below it, moves and hides as one.
const char* const kReportTail = R"(</table>
</main>
<script>
"use strict";
const table = document.querySelector("table");
const groups = [...table.tBodies];
const search = document.getElementById("search");
const count = document.getElementById("count");
const find = () => {
  const words = search.value.toLocaleLowerCase().split(/\s+/).filter(Boolean);
  let shown = 0;
  for (const group of groups) {
    const text = group.textContent.toLocaleLowerCase();
    group.hidden = !words.every((word) => text.includes(word));
    if (!group.hidden) ++shown;
  }
  count.textContent = words.length ? shown + " of " + groups.length + " shown" : "";
};
search.addEventListener("input", find);
search.addEventListener("keydown", (event) => {
  if (event.key === "Escape") { search.value = ""; find(); }
});
const collator = new Intl.Collator(undefined, { numeric: true, sensitivity: "base" });
const heads = [...table.tHead.rows[0].cells];
heads.forEach((head, column) => {
  const text = head.textContent;
  const button = document.createElement("button");
  button.type = "button";
  button.textContent = text;
  head.replaceChildren(button);
  button.addEventListener("click", () => {
    const up = head.getAttribute("aria-sort") !== "ascending";
    heads.forEach((other) => other.removeAttribute("aria-sort"));
    head.setAttribute("aria-sort", up ? "ascending" : "descending");
    const value = (group) => {
      const cell = group.rows[0].cells[column];
      return cell.dataset.value ?? cell.textContent;
    };
    const order = (a, b) => collator.compare(value(a), value(b)) * (up ? 1 : -1);
    table.append(...[...groups].sort(order));
  });
});
document.getElementById("tools").hidden = false;
</script>
</body>
</html>
)";

}  // namespace roundup::host
