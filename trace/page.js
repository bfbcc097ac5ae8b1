'use strict';
// The page is whole without this script. It adds filters, the keys, and opens what a link points at.
(() => {
  const main = document.querySelector('main');
  const form = document.querySelector('form');
  const onlyFaults = document.getElementById('faults');
  const search = document.getElementById('search');
  const count = form.querySelector('output');
  const chunks = [...main.querySelectorAll('.c')].map(element => ({ element, rows: null }));

  // ---- Rows ----

  // To a browser with scripts what stands in a <noscript> is text. So a long page is there at once, and its later rows
  // are made where they come into sight, while nothing else is to do, or when something wants all of them.
  function make(chunk) {
    if (chunk.rows) return;
    const later = chunk.element.querySelector('noscript');
    if (later) chunk.element.innerHTML = later.textContent;
    chunk.rows = [...chunk.element.querySelectorAll('.m')];
  }
  let rows = null;
  function allRows() {
    if (rows) return rows;
    chunks.forEach(make);
    return rows = chunks.flatMap(each => each.rows);
  }
  const chunkOf = row => chunks.find(each => each.element === row.parentNode);

  const whenIdle = window.requestIdleCallback || (callback => setTimeout(callback, 20, { timeRemaining: () => 10 }));
  let made = 0;
  function makeSome(idle) {
    do {
      if (made === chunks.length) return;
      make(chunks[made++]);
    } while (idle.timeRemaining() > 5);
    whenIdle(makeSome);
  }
  const observer = new IntersectionObserver(seen => {
    for (const each of seen) {
      if (!each.isIntersecting) continue;
      make(chunks.find(chunk => chunk.element === each.target));
      observer.unobserve(each.target);
    }
  }, { rootMargin: '1500px' });
  for (const { element } of chunks) observer.observe(element);
  whenIdle(makeSome);
  addEventListener('beforeprint', allRows);

  // ---- Filters ----

  const texts = new Map();  // of rows, as the search looks at them; filled by the first search
  function textOf(row) {
    if (!texts.has(row)) {
      const fields = row.querySelector('dl');
      texts.set(row, (row.firstChild.textContent + ' ' + (fields ? fields.textContent : '')).toLowerCase());
    }
    return texts.get(row);
  }

  function filter() {
    const text = search.value.trim().toLowerCase();
    const faults = onlyFaults.checked;
    const isOn = faults || text !== '';
    const total = allRows().length;
    const rowHeight = matchMedia('(max-width: 760px)').matches ? 64 : 27;  // pixels, more or less: for the scroll bar
    let shown = 0;
    for (const { element, rows } of chunks) {
      let left = 0;
      for (const row of rows) {
        const isWanted = (!faults || row.matches('.f, .h')) && (text === '' || textOf(row).includes(text));
        if (row.hidden === isWanted) row.hidden = !isWanted;
        if (isWanted) ++left;
      }
      element.hidden = left === 0;
      element.style.containIntrinsicBlockSize = isOn ? left * rowHeight + 'px' : '';
      shown += left;
    }
    main.classList.toggle('filtered', isOn);
    count.value = isOn ? shown + ' of ' + total : '';
  }

  function clearFilters() {
    onlyFaults.checked = false;
    search.value = '';
    filter();
  }

  // ---- Moving ----

  function firstInSight() {
    const top = document.querySelector('.top').getBoundingClientRect().bottom;
    const isInSight = element => element.getBoundingClientRect().bottom > top;
    const chunk = chunks.find(each => isInSight(each.element));  // first: what isn't in sight has no layout to ask for
    if (!chunk) return undefined;
    make(chunk);
    return chunk.rows.find(isInSight) || chunk.rows[0];
  }

  // Focuses the next row in a direction that is shown, and is a faulty one where those are wanted.
  function move(step, selector = '.m') {
    const current = document.activeElement.closest('.m');
    let row = current || firstInSight();
    if (!row) return;
    let at = chunks.indexOf(chunkOf(row));
    let place = chunks[at].rows.indexOf(row) + (current ? step : 0);
    for (;;) {
      row = chunks[at].rows[place];
      if (row && !row.hidden && row.matches(selector)) break;
      if (row) {
        place += step;
        continue;
      }
      at += step;
      if (!chunks[at]) return;
      make(chunks[at]);
      place = step > 0 ? 0 : chunks[at].rows.length - 1;
    }
    row.firstChild.focus();
  }

  function leaveSearch() {
    search.value = '';
    filter();
    search.blur();
  }

  const keys = {
    j: () => move(1), k: () => move(-1), n: () => move(1, '.f'), N: () => move(-1, '.f'), '/': () => search.focus(),
  };
  const keysOnRows = { ArrowDown: keys.j, ArrowUp: keys.k };
  const keysInSearch = { ArrowDown: keys.j, Enter: keys.j, Escape: leaveSearch };

  document.addEventListener('keydown', event => {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const isOnRow = event.target.closest('summary') !== null;
    const keysHere = event.target === search ? keysInSearch : isOnRow ? { ...keys, ...keysOnRows } : keys;
    const does = keysHere[event.key];
    if (!does) return;
    event.preventDefault();
    does();
  });

  // A link to a message, from its other half or from outside.
  function goTo(id) {
    if (!/^m\d+$/.test(id)) return;
    let row = document.getElementById(id);
    if (!row) {
      allRows();
      row = document.getElementById(id);
    }
    if (!row) return;
    if (row.hidden) clearFilters();
    row.open = true;
    row.firstChild.focus();
  }
  main.addEventListener('click', event => {
    const link = event.target.closest('a');
    if (!link) return;
    event.preventDefault();
    history.replaceState(null, '', link.hash);
    goTo(link.hash.slice(1));
  });
  addEventListener('hashchange', () => goTo(location.hash.slice(1)));
  goTo(location.hash.slice(1));

  let waiting = 0;
  search.addEventListener('input', () => {
    clearTimeout(waiting);
    waiting = setTimeout(filter, 120);
  });
  onlyFaults.addEventListener('change', filter);
  form.addEventListener('submit', event => event.preventDefault());
  form.hidden = false;
  if (onlyFaults.checked || search.value) filter();  // as the browser remembers them
})();
