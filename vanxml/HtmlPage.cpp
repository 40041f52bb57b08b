#include "vanxml/HtmlPage.h"

const char* const HtmlPage::Start = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n";

const char* const HtmlPage::TableStart = R"html(<section id="files" aria-labelledby="files-title">
<h2 id="files-title">Files</h2>
<div id="filters" role="search" hidden>
<label>Search <input type="search" id="text" placeholder="file or message" autocomplete="off"></label>
<label class="error"><input type="checkbox" value="error" checked> Errors</label>
<label class="warning"><input type="checkbox" value="warning" checked> Warnings</label>
<label class="failure"><input type="checkbox" value="failure" checked> Not checked</label>
<button type="button" id="clear">Show all</button>
<button type="button" id="fold">Hide messages</button>
<output id="shown" for="text"></output>
</div>
<table>
<thead><tr><th scope="col">File</th><th scope="col">Errors</th><th scope="col">Warnings</th></tr></thead>
)html";

const char* const HtmlPage::Style = R"css(
:root {
  color-scheme: light dark;
  --back: #ffffff; --panel: #f5f6f8; --text: #1d2329; --soft: #5a6570; --line: #d5dae0; --edge: #7d8792;
  --error: #b3261e; --warning: #8a5a00; --failure: #6b3fa0; --good: #1a6b3c; --link: #0b57d0;
  --mark: #ffd9d5; --mark-warning: #ffe8b3;
}
@media (prefers-color-scheme: dark) {
  :root {
    --back: #15181c; --panel: #1f242a; --text: #e4e8ec; --soft: #a3adb8; --line: #3a424b; --edge: #77828e;
    --error: #ff9a90; --warning: #f2be5c; --failure: #c9a6ff; --good: #7fd6a0; --link: #8ab4f8;
    --mark: #6e2620; --mark-warning: #5f4300;
  }
}
* { box-sizing: border-box; }
[hidden] { display: none !important; }
body { margin: 0; background: var(--back); color: var(--text); font: 16px/1.5 system-ui, sans-serif; }
main { display: flex; flex-direction: column; max-width: 75rem; margin: 0 auto; padding: 1rem 1.5rem 3rem; }
h1 { order: -2; margin: .5rem 0; font-size: 1.6rem; }
h2 { margin: 1.5rem 0 .5rem; font-size: 1.25rem; }
h3 { margin: 1rem 0 .25rem; font-size: 1rem; }
#summary { order: -1; }
code, .place, .path { font-family: ui-monospace, "DejaVu Sans Mono", Menlo, Consolas, monospace; font-size: .875em; }
ul { margin: 0; padding: 0; list-style: none; }
p { margin: 0; }
button, input { font: inherit; color: inherit; }
button, input[type=search] {
  background: var(--back); border: 1px solid var(--edge); border-radius: .375rem; padding: .2rem .6rem;
}
::placeholder { color: var(--soft); opacity: 1; }
button { cursor: pointer; }
button:disabled { color: var(--soft); cursor: default; }
:focus-visible { outline: 3px solid var(--link); outline-offset: 1px; }
.error b, strong { color: var(--error); }
.warning b, .warning strong { color: var(--warning); }
.failure b, .failure strong { color: var(--failure); }
.good b { color: var(--good); }
.counts { display: flex; flex-wrap: wrap; gap: .75rem; }
.counts li { background: var(--panel); border-radius: .5rem; padding: .5rem 1.25rem; color: var(--soft); }
.counts b { display: block; font-size: 1.75rem; line-height: 1.2; }
.documents b { color: var(--text); }
.bars button {
  display: grid; grid-template-columns: minmax(8rem, 14rem) 1fr 4.5rem; gap: .75rem; align-items: center;
  width: 100%; padding: .1rem .5rem; border-color: transparent; background: none; text-align: left;
}
.bars button:hover { background: var(--panel); }
.bars button[aria-pressed=true] { border-color: var(--link); background: var(--panel); }
.bars .label { overflow-wrap: anywhere; }
.bars svg { width: 100%; height: .9rem; border-radius: .2rem; background: var(--panel); }
rect.error { fill: var(--error); }
rect.warning { fill: var(--warning); }
rect.failure { fill: var(--failure); }
.count, td { font-variant-numeric: tabular-nums; }
.count { text-align: right; }
#filters {
  position: sticky; top: 0; z-index: 1; display: flex; flex-wrap: wrap; gap: .5rem 1rem; align-items: center;
  margin-bottom: .5rem; padding: .5rem 0; background: var(--back);
}
#text { width: 18rem; max-width: 100%; }
#shown { color: var(--soft); }
table { width: 100%; border-collapse: collapse; table-layout: fixed; }
th { padding: .3rem .5rem; text-align: left; overflow-wrap: anywhere; }
thead th { color: var(--soft); font-weight: 600; overflow-wrap: normal; }
thead th:not(:first-child), tr.name td { width: 8rem; padding: .3rem .5rem; text-align: right; }
tr.name { background: var(--panel); border-top: 1px solid var(--line); }
tr.name button { padding: 0 .25rem; border-color: transparent; background: none; font-weight: 600; text-align: left; }
.scripted tr.name button::before { content: "\25BE\00A0"; color: var(--soft); }
.scripted tr.name button[aria-expanded=false]::before { content: "\25B8\00A0"; }
tr.messages td { padding: 0 0 .75rem; }
tr.messages li {
  margin-top: .6rem; padding-left: .75rem; border-left: 3px solid var(--error);
  content-visibility: auto; contain-intrinsic-size: auto 7rem;
}
tr.messages li.warning { border-color: var(--warning); }
tr.messages li.failure { border-color: var(--failure); }
.place, .kind, .note, .path { color: var(--soft); }
.note, .path { padding-left: 3.5rem; overflow-wrap: anywhere; }
.source { margin: .25rem 0; padding: .25rem 0; background: var(--panel); border-radius: .375rem; }
.line { display: grid; grid-template-columns: 3rem 1fr; gap: .5rem; }
.line .number { color: var(--soft); text-align: right; font-size: .875em; user-select: none; }
.line code { white-space: pre-wrap; overflow-wrap: anywhere; }
mark { background: var(--mark); color: inherit; border-radius: .15rem; border-bottom: 2px solid var(--error); }
.warning mark { background: var(--mark-warning); border-color: var(--warning); }
@media (max-width: 40rem) {
  main { padding: .5rem .75rem 2rem; }
  thead th:not(:first-child), tr.name td { width: 5.5rem; padding: .3rem .25rem; }
  #filters { position: static; }
  .bars button { grid-template-columns: 9rem 1fr 3rem; }
}
@media print {
  body { font-size: 10pt; }
  main { display: block; max-width: none; padding: 0; }
  #filters, .scripted tr.name button::before { display: none; }
  .counts li, .source, .bars svg, rect, mark, tr.name { print-color-adjust: exact; }
  tr.messages li { break-inside: avoid; content-visibility: visible; }
  tr.name { break-after: avoid; }
}
)css";

const char* const HtmlPage::StyleWithoutScript = "tr.messages[hidden] { display: table-row !important; }";

const char* const HtmlPage::Script = R"js(
'use strict';
const find = (selector, root = document) => Array.from(root.querySelectorAll(selector));
const byId = id => document.getElementById(id);
const files = byId('files');
document.documentElement.classList.add('scripted');
if (files) {
  files.before(byId('summary'));
  const rows = find('tbody', files).map(body => ({
    body,
    button: body.querySelector('button'),
    messages: body.querySelector('tr.messages'),
    items: find('li', body).map(item => ({ item, kind: item.dataset.kind, severity: item.className })),
  }));
  const total = rows.reduce((sum, row) => sum + row.items.length, 0);
  const boxes = find('#filters input[type=checkbox]');
  const bars = find('.bars button');
  const lower = node => node.textContent.toLowerCase();
  let texts = null;  // the lower-case texts, which only a search needs
  const makeTexts = () =>
    rows.map(row => ({ name: lower(row.button), items: row.items.map(each => lower(each.item)) }));

  const isExpanded = row => row.button.getAttribute('aria-expanded') === 'true';
  const expand = (row, isExpanded) => {
    row.button.setAttribute('aria-expanded', isExpanded);
    row.messages.hidden = !isExpanded;
  };
  const shownRows = () => rows.filter(row => !row.body.hidden);
  const nameFold = () => {
    byId('fold').textContent = shownRows().some(isExpanded) ? 'Hide messages' : 'Show messages';
  };

  const filter = () => {
    const text = byId('text').value.trim().toLowerCase();
    const severities = new Set(boxes.filter(box => box.checked).map(box => box.value));
    const pressed = bars.find(bar => bar.getAttribute('aria-pressed') === 'true');
    const kind = pressed && pressed.dataset.kind;
    if (text && !texts) texts = makeTexts();
    let shownItems = 0;
    let shownFiles = 0;
    rows.forEach((row, i) => {
      const isNamed = !text || texts[i].name.includes(text);
      let shown = 0;
      row.items.forEach((each, k) => {
        const isShown = severities.has(each.severity) && (!kind || each.kind === kind) &&
          (isNamed || texts[i].items[k].includes(text));
        if (each.item.hidden === isShown) each.item.hidden = !isShown;
        shown += isShown ? 1 : 0;
      });
      if (row.body.hidden !== (shown === 0)) row.body.hidden = shown === 0;
      shownItems += shown;
      shownFiles += shown > 0 ? 1 : 0;
    });
    const count = number => number.toLocaleString('en');
    byId('shown').textContent = shownItems === 0 ? 'No message matches' :
      `${count(shownItems)} of ${count(total)} messages in ${count(shownFiles)} of ${count(rows.length)} files`;
    files.querySelector('table').hidden = shownItems === 0;
    byId('fold').disabled = shownItems === 0;
    nameFold();
  };
  const press = bar => {
    for (const each of bars) {
      const isPressed = each === bar && each.getAttribute('aria-pressed') !== 'true';
      each.setAttribute('aria-pressed', isPressed);
    }
    filter();
  };

  rows.forEach(row => row.button.addEventListener('click', () => {
    expand(row, !isExpanded(row));
    nameFold();
  }));
  bars.forEach(bar => bar.addEventListener('click', () => press(bar)));
  boxes.forEach(box => box.addEventListener('change', filter));
  byId('text').addEventListener('input', filter);
  byId('clear').addEventListener('click', () => {
    byId('text').value = '';
    boxes.forEach(box => { box.checked = true; });
    press(null);
  });
  byId('fold').addEventListener('click', () => {
    const shown = shownRows();
    const fold = shown.some(isExpanded);
    shown.forEach(row => expand(row, !fold));
    nameFold();
  });
  document.addEventListener('keydown', event => {
    const isOther = event.target === byId('text') || event.ctrlKey || event.altKey || event.metaKey;
    if (event.key === '/' && !isOther) {
      event.preventDefault();
      byId('text').focus();
    }
  });
  byId('filters').hidden = false;
  filter();
}
)js";
