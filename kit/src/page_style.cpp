#include "page_style.h"

namespace lapwing {

const char* const pageStyle = R"css(
:root { color-scheme: light; --page: #f5f6f8; --panel: #fff; --text: #1b2430; --quiet: #596475;
  --line: #dde2e8; --link: #1d5fa8; --bar: #8fb0d6; --before: #9aa5b4; --after: #4a86c8;
  --bad: #b42318; --good: #17693c; --unsure: #8a5300;
  --s0: #2563b8; --s1: #b45309; --s2: #15803d; --s3: #7e3fb0; --s4: #be185d; --s5: #0f766e; }
@media screen and (prefers-color-scheme: dark) {
  :root { color-scheme: dark; --page: #12161c; --panel: #1a2029; --text: #e4e8ee; --quiet: #9ea9b8;
    --line: #333c48; --link: #82b4f0; --bar: #44658c; --before: #667284; --after: #5b93d2;
    --bad: #ff9c90; --good: #7bd29d; --unsure: #f0b860;
    --s0: #7db3f5; --s1: #f0a860; --s2: #6fcf8b; --s3: #c79bf2; --s4: #f38cb8; --s5: #5fd0c5; } }
* { box-sizing: border-box; }
body { margin: 0; background: var(--page); color: var(--text);
  font: 15px/1.5 system-ui, sans-serif; font-variant-numeric: tabular-nums; }
main { max-width: 1060px; margin: 0 auto; padding: 24px 16px 48px; }
h1, h2, p, figcaption, th, td, bdi { overflow-wrap: anywhere; }
h1 { font-size: 26px; line-height: 1.25; margin: 0 0 4px; }
h2 { font-size: 18px; line-height: 1.35; margin: 0; }
p { margin: 4px 0; }
bdi { white-space: pre-wrap; }
a { color: var(--link); text-decoration: none; }
a:hover { text-decoration: underline; }
.quiet, figcaption, caption { color: var(--quiet); }
.panel { background: var(--panel); border: 1px solid var(--line); border-radius: 8px;
  padding: 14px 16px; margin: 16px 0; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; width: 100%; font-size: 14px; }
caption { text-align: left; font-size: 13px; padding-bottom: 4px; }
th, td { padding: 4px 0 4px 16px; text-align: right; border-top: 1px solid var(--line);
  vertical-align: baseline; }
td { white-space: nowrap; }
thead th { border-top: 0; color: var(--quiet); font-weight: 500; white-space: nowrap; }
tbody th { font-weight: 500; min-width: 11em; }
.charts th, .charts td { padding-left: 10px; font-size: 13px; }
.charts tbody th { min-width: 0; white-space: nowrap; }
tr > :first-child, .charts tr > :first-child { padding-left: 0; text-align: left; }
.text { text-align: left; }
.nowrap { white-space: nowrap; }
.charts { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 400px), 1fr));
  gap: 16px 28px; margin-top: 10px; }
.charts > * { min-width: 0; }
figure { margin: 0; }
figcaption { font-size: 13px; margin: 2px 0 6px; }
svg { display: block; width: 100%; max-width: 560px; height: auto; }
svg.hidden { position: absolute; width: 0; height: 0; }
svg.key { display: inline-block; width: 24px; height: 12px; }
svg text { font-size: 11px; fill: var(--quiet); }
svg .mark { fill: var(--text); }
svg .mark, svg .quiet { paint-order: stroke; stroke: var(--panel); stroke-width: 3px;
  stroke-linejoin: round; }
path { fill: none; }
.grid { stroke: var(--line); }
.axis { stroke: var(--quiet); }
.marks { stroke: var(--text); stroke-width: 1.2; }
.bars { stroke: var(--bar); }
.before { stroke: var(--before); }
.after { stroke: var(--after); }
.line { stroke-width: 1.5; stroke-linejoin: round; }
.band { fill-opacity: .16; stroke-opacity: .3; }
.b0 { fill: var(--s0); stroke: var(--s0); } .b1 { fill: var(--s1); stroke: var(--s1); }
.b2 { fill: var(--s2); stroke: var(--s2); } .b3 { fill: var(--s3); stroke: var(--s3); }
.b4 { fill: var(--s4); stroke: var(--s4); } .b5 { fill: var(--s5); stroke: var(--s5); }
.s0 { stroke: var(--s0); marker: url(#k0); } .s1 { stroke: var(--s1); marker: url(#k1); }
.s2 { stroke: var(--s2); marker: url(#k2); } .s3 { stroke: var(--s3); marker: url(#k3); }
.s4 { stroke: var(--s4); marker: url(#k4); } .s5 { stroke: var(--s5); marker: url(#k5); }
.key .line { marker-start: none; marker-end: none; }
.f0 { fill: var(--s0); } .f1 { fill: var(--s1); } .f2 { fill: var(--s2); }
.f3 { fill: var(--s3); } .f4 { fill: var(--s4); } .f5 { fill: var(--s5); }
.bad { --tone: var(--bad); } .good { --tone: var(--good); } .unsure { --tone: var(--unsure); }
.plain { --tone: var(--quiet); }
.badge { display: inline-block; color: var(--tone); border: 1px solid var(--tone);
  border-radius: 10px; padding: 0 9px; font-size: 13px; font-weight: 600; line-height: 19px;
  white-space: nowrap; }
h2 .badge { margin-left: 6px; vertical-align: 2px; }
.panel.bad, .panel.good, .panel.unsure { border-left: 4px solid var(--tone); }
.margin { fill: var(--quiet); fill-opacity: .16; }
.interval { stroke: var(--tone); stroke-width: 3; }
.shift { fill: var(--tone); }
.work { fill: var(--s1); }
.padding { fill: var(--bar); }
.late { fill: var(--bad); }
.recorded { fill: var(--before); }
.curve { stroke: var(--s0); stroke-width: 1.8; }
.overruns { fill: var(--bad); }
.swatch { display: inline-block; width: 11px; height: 11px; vertical-align: -1px; }
@media screen and (max-width: 500px) {
  main { padding: 16px 8px 32px; }
  .panel { padding: 12px 10px; }
}
@media print {
  body { background: #fff; font-size: 10pt; }
  main { max-width: none; padding: 0; }
  .panel { break-inside: avoid; border-radius: 0; }
  .scroll { overflow: visible; }
  table, .badge { font-size: 8pt; }
  th, td { padding-left: 7px; }
  td, thead th { white-space: normal; }
  tbody th { min-width: 0; }
  .charts th, .charts td { padding-left: 6px; font-size: 7.5pt; }
  .charts { grid-template-columns: 1fr 1fr; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
}
)css";

}  // namespace lapwing
