// SPDX-License-Identifier: MIT
#include "tools/smi/report/style.hpp"

namespace nimba::smi::page {

const char* const kStyle = R"(
:root {
  color-scheme: light dark;
  --ink: #1b1f24; --faint: #57606a; --paper: #ffffff; --shade: #f3f5f7; --rule: #d0d7de;
  --good: #1a6e34; --fair: #7a5200; --bad: #b3261e; --link: #0b57a4;
  --c0: #0b6bcb; --c1: #b3261e; --c2: #1a7f37; --c3: #8250df; --c4: #9a6700; --c5: #0e7490;
  --f0: #a6cee3; --f1: #b2df8a; --f2: #fdd49e; --f3: #cab2d6; --f4: #fbb4ae; --mixed: #d2c2a4;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --ink: #e6edf3; --faint: #9aa4af; --paper: #12161b; --shade: #1c2229; --rule: #38414b;
    --good: #5fd07f; --fair: #e0b14a; --bad: #ff8a80; --link: #79b8ff;
    --c0: #6cb6ff; --c1: #ff8a80; --c2: #57d364; --c3: #d2a8ff; --c4: #e3b341; --c5: #39c5cf;
    --f0: #3b7ea6; --f1: #5a8f2f; --f2: #a8762a; --f3: #7d5c96; --f4: #a8544c; --mixed: #7d6f52;
  }
}
* { box-sizing: border-box; }
body {
  margin: 0 auto; padding: 1rem; max-width: 75rem; color: var(--ink); background: var(--paper);
  font: 15px/1.45 system-ui, sans-serif; overflow-wrap: anywhere;
}
a { color: var(--link); }
h1 { font-size: 1.6rem; margin: 0.5rem 0; }
.whole { display: inline-block; white-space: nowrap; }
h2 { font-size: 1.25rem; margin: 2rem 0 0.5rem; padding-top: 0.5rem; border-top: 1px solid var(--rule); }
h3 { font-size: 1.05rem; margin: 1.2rem 0 0.4rem; }
p { margin: 0.4rem 0; }
nav ul { display: flex; flex-wrap: wrap; gap: 0.3rem 1rem; list-style: none; margin: 0; padding: 0; }
dl { display: grid; grid-template-columns: max-content 1fr; gap: 0.1rem 1rem; margin: 0.5rem 0; }
dt { color: var(--faint); }
dd { margin: 0; }
.wide { overflow-x: auto; margin: 0.6rem 0; }
table { border-collapse: collapse; min-width: 14rem; font-variant-numeric: tabular-nums; }
caption { text-align: left; color: var(--faint); padding-bottom: 0.2rem; }
th, td {
  text-align: left; vertical-align: top; padding: 0.2rem 0.6rem; border-bottom: 1px solid var(--rule);
  overflow-wrap: break-word; max-width: 34rem;
}
thead th { background: var(--shade); white-space: nowrap; }
tbody th { font-weight: normal; min-width: 6rem; }
th.number, td.number { text-align: right; white-space: nowrap; }
.bar {
  display: inline-block; width: 6rem; height: 0.7em; border: 1px solid var(--faint); background: var(--paper);
}
.bar span { display: block; height: 100%; background: var(--c0); }
.mark { font-weight: bold; white-space: nowrap; overflow-wrap: normal; }
.of { color: var(--faint); white-space: nowrap; }
.good { color: var(--good); } .fair { color: var(--fair); } .bad { color: var(--bad); }
.plain { color: var(--faint); }
.figures { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 30rem), 1fr)); gap: 1rem; }
figure { min-width: 0; margin: 0; }
figcaption { font-weight: bold; }
figure caption { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
.plot, .strip { display: block; width: 100%; max-width: 100%; }
.plot text { font: 12px system-ui, sans-serif; fill: var(--faint); }
.grid { stroke: var(--rule); }
.line { fill: none; stroke-width: 2; stroke-linejoin: round; }
.line0 { stroke: var(--c0); }
.line1 { stroke: var(--c1); stroke-dasharray: 8 3; }
.line2 { stroke: var(--c2); stroke-dasharray: 2 3; }
.line3 { stroke: var(--c3); stroke-dasharray: 10 3 2 3; }
.line4 { stroke: var(--c4); stroke-dasharray: 5 5; }
.line5 { stroke: var(--c5); stroke-dasharray: 14 4; }
.dot0 { fill: var(--c0); } .dot1 { fill: var(--c1); } .dot2 { fill: var(--c2); }
.dot3 { fill: var(--c3); } .dot4 { fill: var(--c4); } .dot5 { fill: var(--c5); }
.key { width: 30px; height: 10px; }
.patch { width: 14px; height: 14px; vertical-align: -2px; }
.strip { height: 2.5rem; background: var(--shade); }
.strip rect { stroke: var(--faint); stroke-width: 0.5; }
.fold { fill: none; stroke: var(--faint); }
.fill0 { fill: var(--f0); } .fill1 { fill: var(--f1); } .fill2 { fill: var(--f2); }
.fill3 { fill: var(--f3); } .fill4 { fill: var(--f4); } .mixed { fill: var(--mixed); }
@media (max-width: 40rem) {
  body { padding: 0.6rem; font-size: 14px; }
  dl { grid-template-columns: 1fr; }
  dd { margin-bottom: 0.4rem; }
  h1 { font-size: 1.3rem; }
  thead th, thead th.number { white-space: normal; }
  th, td { padding: 0.2rem 0.4rem; }
  #findings td, #unread th, #unread td { overflow-wrap: anywhere; }
}
@page { margin: 12mm; }
@media print {
  body { max-width: none; padding: 0; font-size: 9pt; }
  nav { display: none; }
  .wide { overflow: visible; }
  table { font-size: 7.5pt; max-width: 100%; }
  th, td { padding: 0.1rem 0.3rem; }
  thead th, thead th.number { white-space: normal; }
  .figures { grid-template-columns: 1fr 1fr; }
  tr, figure, .strip { break-inside: avoid; }
  h2, h3, caption { break-after: avoid; }
  .bar span, .strip rect, thead th { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)";

}  // namespace nimba::smi::page
