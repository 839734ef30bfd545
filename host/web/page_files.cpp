// The style sheet and the script of the pages. Tested by tests/browser.
#include "host/web/html.h"

namespace host {

const char* const kStyleSheet = R"css(:root {
  color-scheme: light dark;
  --paper: #fff; --ink: #1b1b1f; --faint: #55565c; --rule: #c9cad1; --block: #f3f4f7;
  --link: #0b4f9e; --good: #0a5f38; --doubtful: #7a4b00; --bad: #a3121b; --button: #0b4f9e; --on: #fff;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #15171b; --ink: #e9eaee; --faint: #b0b3bb; --rule: #43464e; --block: #1f2228;
    --link: #8fc1ff; --good: #7ddba7; --doubtful: #f3c16a; --bad: #ff9a9a; --button: #8fc1ff; --on: #10141a;
  }
}
* { box-sizing: border-box; }
body { background: var(--paper); color: var(--ink); font: 1rem/1.5 system-ui, sans-serif; margin: 0; }
header, main { margin: 0 auto; max-width: 110rem; padding: .75rem 1rem; }
header { border-bottom: 1px solid var(--rule); display: flex; flex-wrap: wrap; gap: .25rem 1.5rem; align-items: center; }
header form { margin: 0 0 0 auto; display: flex; flex-wrap: wrap; gap: .25rem 1rem; align-items: center; }
nav ul { display: flex; flex-wrap: wrap; gap: 0 1rem; list-style: none; margin: 0; padding: 0; }
nav a, .more a { display: inline-block; padding: .4rem 0; }
nav a[aria-current] { color: var(--ink); font-weight: bold; }
.name { font-weight: bold; }
a { color: var(--link); }
th a, td a { display: inline-block; min-height: 1.5rem; }
tbody a { white-space: nowrap; }
h1 { font-size: 1.6rem; line-height: 1.2; margin: .5rem 0; }
h2 { font-size: 1.25rem; line-height: 1.2; margin: 2rem 0 .5rem; }
main:focus { outline: none; }
.skip { position: absolute; left: -100vw; background: var(--paper); padding: .5rem 1rem; }
.skip:focus { left: 0; top: 0; z-index: 1; }
:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
table { border-collapse: collapse; width: 100%; margin: .5rem 0 1rem; }
caption { color: var(--faint); text-align: left; padding: .25rem 0; }
th > div, td > div { min-width: 5.5rem; }
td:last-child > div { min-width: 10rem; }
th, td { border-bottom: 1px solid var(--rule); padding: .35rem .75rem .35rem 0; text-align: left; vertical-align: top; overflow-wrap: anywhere; }
thead th { color: var(--faint); font-weight: normal; overflow-wrap: normal; }
tbody th { font-weight: normal; }
.time { white-space: nowrap; font-variant-numeric: tabular-nums; }
.state { font-weight: bold; display: inline-block; min-width: 9.5rem; }
.verdict .state, dd .state { min-width: 0; }
.state.plain { font-weight: normal; }
.good { color: var(--good); }
.doubtful { color: var(--doubtful); }
.bad { color: var(--bad); }
.good::before { content: "\2713\a0"; content: "\2713\a0" / ""; }
.doubtful::before { content: "\25B3\a0"; content: "\25B3\a0" / ""; }
.bad::before { content: "\2717\a0"; content: "\2717\a0" / ""; }
.verdict { font-size: 1.25rem; margin: .25rem 0; }
.text { font-size: 1.15rem; overflow-wrap: anywhere; white-space: pre-wrap; }
dl { display: grid; grid-template-columns: minmax(7rem, 14rem) 1fr; gap: .3rem 1rem; margin: .5rem 0; }
dt { color: var(--faint); }
dd { margin: 0; overflow-wrap: anywhere; }
form { margin: .5rem 0; }
td form { margin: 0; }
fieldset { min-width: 0; border: 1px solid var(--rule); margin: 1rem 0; padding: .5rem 1rem 1rem; max-width: 40rem; }
legend { padding: 0 .5rem; font-weight: bold; }
label { display: block; margin: .5rem 0; max-width: 40rem; }
label input, label select { display: block; width: 100%; }
.filter { background: var(--block); display: flex; flex-wrap: wrap; gap: .25rem 1rem; align-items: end; padding: .5rem; }
.filter label { flex: 1 1 11rem; max-width: 18rem; }
.filter [type=datetime-local] { font-size: .85rem; }
.filter button { margin: .5rem 0; }
input, select, button { font: inherit; min-height: 2.25rem; padding: .25rem .5rem; max-width: 100%; border: 1px solid var(--faint); border-radius: .25rem; background: var(--paper); color: var(--ink); }
button { background: var(--button); border-color: var(--button); color: var(--on); cursor: pointer; padding: .25rem .9rem; }
header button, td button, .refresh button, [action="/withdraw"] button { background: var(--paper); color: var(--link); }
[action="/withdraw"] { margin-top: 1.5rem; }
.refresh { background: var(--block); display: flex; flex-wrap: wrap; gap: .25rem 1rem; align-items: center; margin: 0; padding: .35rem 1rem; }
.refresh p { margin: 0; }
.week { font-family: ui-monospace, monospace; white-space: pre; }
.week b { color: var(--good); }
pre { background: var(--block); overflow-x: auto; padding: .75rem; }
.picture { overflow-x: auto; }
img { background: #fff; }
@media (max-width: 72rem) {
  thead { clip-path: inset(50%); height: 1px; overflow: hidden; position: absolute; width: 1px; }
  table, caption, tbody, th, td { display: block; }
  tr { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 18rem), 1fr)); gap: 0 1.5rem; background: var(--block); border-left: .25rem solid var(--rule); margin: 0 0 .75rem; padding: .35rem .6rem; }
  th, td { border: 0; display: grid; grid-template-columns: 6.5rem 1fr; gap: .5rem; padding: .15rem 0; }
  th > div, td > div, td:last-child > div { min-width: 0; }
  th[data-label]::before, td[data-label]::before { color: var(--faint); content: attr(data-label); content: attr(data-label) / ""; }
  .time { white-space: normal; }
  .state { min-width: 0; }
  td:has(.week) { grid-template-columns: 1fr; gap: 0; }
}
@media (max-width: 40rem) {
  header form { margin: 0; }
  dl { display: block; }
  dd { margin-bottom: .3rem; }
  .week { font-size: .9rem; }
}
@media (min-width: 120rem) { html { font-size: 125%; } }
)css";

// A click, a key or a chosen text is never lost: then the part waits for the next time.
const char* const kScript = R"js('use strict';
(function () {
  var part = document.getElementById('refreshed');
  if (!part) { return; }
  var every = 5000;
  var said = document.createElement('p');
  said.setAttribute('role', 'status');
  var button = document.createElement('button');
  button.type = 'button';
  button.id = 'refreshing';
  var bar = document.createElement('div');
  bar.className = 'refresh';
  bar.appendChild(said);
  bar.appendChild(button);
  part.parentNode.insertBefore(bar, part);

  var timer = 0;
  var last = '';
  function say(text) { if (said.textContent !== text) { said.textContent = text; } }
  function kept() { try { return sessionStorage.getItem('refreshing') !== 'stopped'; } catch (e) { return true; } }
  function keep(on) { try { sessionStorage.setItem('refreshing', on ? 'on' : 'stopped'); } catch (e) {} }
  function inUse() {
    var at = document.activeElement;
    var chosen = document.getSelection();
    return (at && part.contains(at) && /^(INPUT|SELECT|TEXTAREA)$/.test(at.tagName)) ||
           (chosen && !chosen.isCollapsed && part.contains(chosen.anchorNode));
  }
  function replace(fresh) {
    if (fresh.innerHTML === last || inUse()) { return; }
    last = fresh.innerHTML;
    var at = document.activeElement;
    var id = at && part.contains(at) ? at.id : '';
    var link = at && part.contains(at) ? at.getAttribute('href') : null;
    var x = window.scrollX, y = window.scrollY;
    part.innerHTML = last;
    var again = id ? document.getElementById(id)
                   : link ? part.querySelector('a[href="' + CSS.escape(link) + '"]') : null;
    if (again) { again.focus({preventScroll: true}); }
    window.scrollTo(x, y);
  }
  function load() {
    fetch(location.href, {credentials: 'same-origin', cache: 'no-store'}).then(function (answer) {
      if (answer.redirected) { stop('You are signed out: load the page again to sign in.'); return ''; }
      if (!answer.ok) { throw new Error(answer.status); }
      return answer.text();
    }).then(function (html) {
      if (!html || !timer) { return; }
      var fresh = new DOMParser().parseFromString(html, 'text/html').getElementById('refreshed');
      if (fresh) { replace(fresh); }
      say('This part is loaded again every 5 seconds.');
    }).catch(function () {
      if (timer) { say('This part can not be loaded now, and is old; it is tried again every 5 seconds.'); }
    });
  }
  function stop(why) {
    clearInterval(timer);
    timer = 0;
    say(why);
    button.textContent = 'Refresh again';
  }
  function start() {
    timer = setInterval(load, every);
    say('This part is loaded again every 5 seconds.');
    button.textContent = 'Stop refreshing';
  }
  button.addEventListener('click', function () {
    keep(!timer);
    if (timer) { stop('Refreshing is stopped.'); } else { start(); load(); }
  });
  if (kept()) { start(); } else { stop('Refreshing is stopped.'); }
})();
)js";

}  // namespace host
