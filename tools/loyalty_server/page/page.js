// The page: asks the server what there is, shows it, and asks again as soon as something has changed.
'use strict';

const mostShown = 200;
const quickFaults = [
  ['Behave', 'off'], ['Server away', 'refuse'], ['Black hole', 'blackhole'], ['No answer', 'silence'],
  ['Answer lost', 'cut 0'], ['5 s late', 'delay 5000'], ['Error 500', 'http 500'], ['Locked card', 'refusal LOCKED_CARD'],
];

const by = id => document.getElementById(id);

// An element with properties and children; a text is always shown as text.
function make(tag, properties, ...children) {
  const element = Object.assign(document.createElement(tag), properties);
  element.append(...children);
  return element;
}

const amount = hundredths =>
  (hundredths < 0 ? '-' : '') + Math.floor(Math.abs(hundredths) / 100) + '.' + String(Math.abs(hundredths) % 100).padStart(2, '0');

const clock = time => new Date(time).toLocaleTimeString([], {hourCycle: 'h23'});

function pretty(text) {
  try {
    return JSON.stringify(JSON.parse(text), null, 2);
  } catch {
    return text;
  }
}

async function call(method, path, body) {
  const answer = await fetch('/api/' + path, {method, body: body && JSON.stringify(body)});
  const json = await answer.json();
  if (!answer.ok) throw new Error(json.error);
  return json;
}
const get = path => call('GET', path);

let problemTimer = 0;
async function change(path, body) {
  try {
    await call('PUT', path, body);
    by('problem').hidden = true;
  } catch (error) {
    by('problem').textContent = error.message;
    by('problem').hidden = false;
    clearTimeout(problemTimer);
    problemTimer = setTimeout(() => { by('problem').hidden = true; }, 6000);
  }
}

// --- What there is

function showState(state) {
  by('address').textContent = 'http://' + state.address + '/ws';
  by('count').textContent = state.exchanges || '';
  const isOff = state.fault === 'off' && state.steps === 1;
  by('in-force').hidden = isOff;
  by('fault').textContent = state.fault;
  by('step').textContent = state.steps > 1 ? `step ${state.step} of ${state.steps}` : '';
  for (const button of by('quick').children) button.classList.toggle('on', !isOff && button.value === state.fault);
  for (const radio of document.getElementsByName('update')) radio.checked = radio.value === state.update;
  if (document.activeElement !== by('ad')) by('ad').value = state.ad;
}

function badge(text, kind) {
  return make('span', {className: 'badge ' + kind, title: text}, text);
}

function text(title, bytes, content) {
  const cut = content.length < bytes && bytes > 65536 ? ', of which the beginning is shown' : '';
  return make('div', {}, make('h3', {}, `${title}, ${bytes} bytes${cut}`), make('pre', {}, pretty(content)));
}

function exchangeRow(exchange) {
  const time = make('span', {className: 'quiet', title: exchange.time}, clock(exchange.time));
  if (exchange.note) return make('div', {className: 'note new'}, time, exchange.note);
  const badges = make('span', {className: 'badges'});
  if (exchange.fault) badges.append(badge(exchange.fault, 'warn'));
  if (exchange.code) {
    badges.append(badge(exchange.code, exchange.code === 'OK' ? 'good' : 'bad'));
  } else {
    badges.append(badge('not done', ''));
  }
  const details = [exchange.card && 'card ' + exchange.card, exchange.details].filter(Boolean).join('  ·  ');
  const row = make('details', {className: 'exchange new'},
    make('summary', {}, time, make('span', {title: 'terminal'}, exchange.terminal || '–'),
      make('span', {className: 'operation', title: exchange.requestId}, exchange.operation),
      make('span', {className: 'details', title: details}, details), badges));
  row.addEventListener('toggle', () => {
    if (row.open && row.children.length === 1) {
      row.append(make('div', {className: 'both'}, text('Request', exchange.requestBytes, exchange.request),
        text('Answer', exchange.answerBytes, exchange.answer)));
    }
  });
  return row;
}

let lastExchange = 0;
async function showExchanges() {
  const {exchanges} = await get('exchanges?after=' + lastExchange);
  for (const exchange of exchanges) {
    lastExchange = exchange.number;
    by('exchanges').prepend(exchangeRow(exchange));
  }
  while (by('exchanges').children.length > mostShown) by('exchanges').lastChild.remove();
  by('no-exchange').hidden = by('exchanges').children.length > 0;
}

// Shows a row for each item, by its key. A cell that has not changed stays the very element it was, under the
// hand of whoever is about to use it.
function showRows(body, items, key, makeRow) {
  const known = body.shown ?? new Map();
  body.shown = new Map();
  for (const item of items) {
    const row = makeRow(item);
    const old = known.get(item[key]);
    if (old) [...row.cells].forEach((cell, i) => {
      if (!cell.isEqualNode(old.cells[i])) old.cells[i].replaceWith(cell);
    });
    body.shown.set(item[key], old ?? row);
    known.delete(item[key]);
  }
  for (const row of known.values()) row.remove();
  [...body.shown.values()].forEach((row, place) => {
    if (body.children[place] !== row) body.insertBefore(row, body.children[place] ?? null);
  });
}

function purse({amount: whole, reserved, expected}) {
  const cell = make('td', {className: 'n'}, amount(whole));
  if (reserved) cell.append(make('small', {}, amount(reserved) + ' reserved'));
  if (expected) cell.append(make('small', {}, amount(expected) + ' expected'));
  return cell;
}

function cardRow(card) {
  const state = make('select', {ariaLabel: 'state of card ' + card.number},
    ...['sold', 'active', 'locked'].map(name => make('option', {value: name, defaultSelected: name === card.state}, name)));
  state.addEventListener('change', () => change('cards/' + encodeURIComponent(card.number), {state: state.value}));
  return make('tr', {}, make('td', {className: 'mono'}, card.number), make('td', {}, state), purse(card.GLOBAL),
    purse(card.LOCAL), purse(card.DISCOUNT));
}

async function showCards() {
  showRows(by('cards'), (await get('cards')).cards, 'number', cardRow);
}

const paymentKinds = {held: 'warn', confirmed: 'good', canceled: '', returned: 'bad'};

function paymentRow(payment) {
  return make('tr', {title: payment.time},
    make('td', {className: 'mono'}, payment.requestId, make('small', {}, 'card ' + payment.card)),
    make('td', {}, badge(payment.state, paymentKinds[payment.state])), make('td', {className: 'n'}, amount(payment.sum)),
    make('td', {className: 'n'}, amount(payment.spent)), make('td', {className: 'n'}, amount(payment.earned)));
}

async function showPayments() {
  const {payments} = await get('payments?most=' + mostShown);
  by('no-payment').hidden = payments.length > 0;
  showRows(by('payments'), payments, 'requestId', paymentRow);
}

function terminalRow(terminal) {
  const lock = make('button', {type: 'button'}, terminal.locked ? 'Unlock' : 'Lock');
  lock.addEventListener('click', () => change('terminals/' + encodeURIComponent(terminal.id), {locked: !terminal.locked}));
  return make('tr', {}, make('td', {}, terminal.id), make('td', {className: 'mono quiet'}, terminal.lastId),
    make('td', {className: 'n'}, lock));
}

async function showTerminals() {
  const {terminals} = await get('terminals');
  by('no-terminal').hidden = terminals.length > 0;
  showRows(by('terminals'), terminals, 'id', terminalRow);
}

function showLive(isLive) {
  by('live').textContent = isLive ? 'live' : 'the server is gone';
  by('live').className = 'live ' + (isLive ? 'on' : 'off');
}

const pause = milliseconds => new Promise(done => setTimeout(done, milliseconds));

async function follow() {
  for (let revision = 0;;) {
    try {
      const asked = Date.now();
      const state = await get(`state?after=${revision}&wait=30`);
      showLive(true);
      if (state.revision === revision && Date.now() - asked < 500) await pause(1000);
      revision = state.revision;
      showState(state);
      await Promise.all([showExchanges(), showCards(), showPayments(), showTerminals()]);
    } catch (error) {
      console.error(error);
      showLive(false);
      await pause(1000);
      // It may be another one, which counts anew.
      revision = 0;
      lastExchange = 0;
      by('exchanges').replaceChildren();
    }
  }
}

// --- What can be changed

function setUpFaults({faults, operations}) {
  for (const [title, fault] of quickFaults) {
    const button = make('button', {type: 'button', value: fault, title: 'fault ' + fault}, title);
    button.addEventListener('click', () => change('fault', {fault}));
    by('quick').append(button);
  }
  by('fault-kind').append(...faults.map(({fault}) => make('option', {value: fault}, fault)));
  by('fault-operation').append(...operations.map(operation => make('option', {value: operation}, operation)));
  const explain = () => {
    const form = faults.find(({fault}) => fault === by('fault-kind').value);
    by('fault-help').textContent = form.help;
    by('fault-arguments').placeholder = form.arguments;
    by('fault-arguments').disabled = form.arguments === '';
    by('fault-arguments').value = '';
  };
  by('fault-kind').value = 'cut';
  by('fault-kind').addEventListener('change', explain);
  explain();
}

function send(form, run) {
  by(form).addEventListener('submit', event => {
    event.preventDefault();
    run();
  });
}

send('fault-form', () => change('fault', {fault: [
  by('fault-kind').value, by('fault-arguments').value,
  by('fault-operation').value && 'on ' + by('fault-operation').value,
  by('fault-times').value && 'times ' + by('fault-times').value].join(' ')}));
send('script-form', () => change('fault', {script: by('script').value}));
send('ad-form', () => change('ad', {ad: by('ad').value}));
by('fault-off').addEventListener('click', () => change('fault', {fault: 'off'}));
by('update').addEventListener('change', event => change('update', {update: event.target.value}));
get('faults').then(setUpFaults).then(follow);
