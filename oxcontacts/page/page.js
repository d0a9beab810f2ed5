"use strict";
(() => {
const book = JSON.parse(document.getElementById("data").textContent);
const persons = book.persons;
const at = id => document.getElementById(id);

// Whatever comes from contacts is a text, never a tag.
function make(tag, name, text) {
  const node = document.createElement(tag);
  if (name) node.className = name;
  if (text !== undefined) node.textContent = text;
  return node;
}

function makeText(tag, name, text) {
  const node = make(tag, name, text);
  node.dir = "auto";
  return node;
}

// ---- Books and groups ----

persons.forEach((person, index) => { person.index = index; person.groups = []; });
book.groups.forEach((group, index) => { group.index = index; });
book.groups.forEach(group => group.persons.forEach(index => persons[index].groups.push(group)));

const counted = (number, what) =>
    number.toLocaleString() + " " + what + (number === 1 ? "" : "s");

// Those groups with all below them, and how deep each lies; trees may be deep. A group that lies in
// several is opened once.
function walk(roots) {
  const opened = new Set();
  const waiting = roots.map(index => [index, 1]).reverse();
  const found = [];
  while (waiting.length) {
    const [index, depth] = waiting.pop();
    found.push([book.groups[index], depth]);
    if (opened.has(index)) continue;
    opened.add(index);
    for (const below of [...book.groups[index].groups].reverse()) waiting.push([below, depth + 1]);
  }
  return found;
}

function personsBelow(group) {
  const held = new Set();
  for (const [each] of walk([group.index])) each.persons.forEach(index => held.add(index));
  return held;
}

function artwork(of) {
  const image = make("img");
  image.src = of.picture;
  image.alt = "";
  return image;
}

// What the list is limited to: a name and a test of persons.
const everybody = {name: "All contacts", holds: () => true};
let place = everybody;

function addPlace(where, {label, of, depth, many, image}) {
  const button = make("button", depth === 0 ? "book" : "");
  button.type = "button";
  button.style.paddingInlineStart = 10 + 16 * Math.min(depth, 8) + "px";
  if (image) button.append(artwork(image));
  button.append(makeText("span", "label", label || "(no name)"), make("span", "many", many.toLocaleString()));
  button.setAttribute("aria-current", String(of === place));
  button.addEventListener("click", () => {
    place = of;
    for (const each of at("tree").querySelectorAll("button")) {
      each.setAttribute("aria-current", String(each === button));
    }
    showPlaces(false);
    refresh();
  });
  const item = make("li");
  item.append(button);
  where.append(item);
}

function fillTree() {
  const tree = at("tree");
  addPlace(tree, {label: everybody.name, of: everybody, depth: 0, many: persons.length});
  const inBook = new Map();
  for (const person of persons) inBook.set(person.book, (inBook.get(person.book) ?? 0) + 1);
  book.books.forEach((each, index) => {
    addPlace(tree, {label: each.name, depth: 0, many: inBook.get(index) ?? 0,
                    image: each.picture ? each : null,
                    of: {name: each.name, holds: person => person.book === index}});
    for (const [group, depth] of walk(each.groups)) {
      const held = personsBelow(group);
      addPlace(tree, {label: group.name, depth, many: held.size,
                      of: {name: group.name, holds: person => held.has(person.index)}});
    }
  });
}

function showPlaces(open) {
  at("places").classList.toggle("open", open);
  at("menu").setAttribute("aria-expanded", String(open));
}

// ---- The list: only the rows that are seen are in the page. ----

const kRow = 60;
const kLetter = 30;
const kLongList = 40;
let found = [];    // persons
let rows = [];     // {top, height, person or letter, place in found}
let current = -1;  // place in found
const drawn = new Map();

// Names of East Asia begin with the family, and letters that are joined would make a word.
const kOneLetter =
    /[\p{Script=Han}\p{Script=Hiragana}\p{Script=Katakana}\p{Script=Hangul}\p{Script=Arabic}\p{Script=Syriac}]/u;

function initialsOf(name) {
  const letters = name.normalize("NFC").match(/[\p{L}\p{N}]\p{M}*/gu);
  if (!letters) return "?";
  if (kOneLetter.test(letters[0])) return letters[0];
  const words = name.normalize("NFC").split(/\s+/u)
      .map(word => word.match(/[\p{L}\p{N}]\p{M}*/u)?.[0]).filter(Boolean);
  const last = words.length > 1 ? words[words.length - 1] : "";
  return (words[0] + last).toUpperCase();
}

function faceOf(person, size) {
  if (person.picture) {
    const image = make("img", "face" + size);
    image.src = person.picture;
    image.alt = "";
    image.decoding = "sync";
    return image;
  }
  let hash = 0;
  for (const letter of person.name) hash = Math.imul(hash ^ letter.codePointAt(0), 0x9e3779b1);
  const face = make("span", "face ground" + (hash >>> 29) + size, initialsOf(person.name));
  face.setAttribute("aria-hidden", "true");
  return face;
}

const nameOf = person => person.name || "(no name)";

function layOut() {
  rows = [];
  let top = 0;
  let letter = "";
  const withLetters = found.length > kLongList;
  found.forEach((person, index) => {
    if (withLetters && person.letter && person.letter !== letter) {
      letter = person.letter;
      rows.push({top, height: kLetter, letter});
      top += kLetter;
    }
    rows.push({top, height: kRow, person, index});
    top += kRow;
  });
  at("rows").style.height = top + "px";
}

function draw(row) {
  if (!row.person) {
    const heading = make("div", "letter", row.letter);
    heading.setAttribute("role", "presentation");
    heading.style.top = row.top + "px";
    return heading;
  }
  const node = make("div", "row");
  node.id = "row" + row.index;
  node.style.top = row.top + "px";
  node.setAttribute("role", "option");
  node.setAttribute("aria-posinset", row.index + 1);
  node.setAttribute("aria-setsize", found.length);
  node.setAttribute("aria-selected", String(row.index === current));
  const words = make("div", "words");
  words.append(makeText("span", "name", nameOf(row.person)));
  if (row.person.second) words.append(makeText("span", "second", row.person.second));
  node.append(faceOf(row.person, ""), words);
  node.addEventListener("click", () => { choose(row.index); open(); });
  return node;
}

function drawRows() {
  const list = at("list");
  const from = list.scrollTop - 5 * kRow;
  const to = list.scrollTop + list.clientHeight + 5 * kRow;
  let low = 0;
  for (let high = rows.length; low < high;) {
    const middle = (low + high) >> 1;
    if (rows[middle].top + rows[middle].height < from) low = middle + 1; else high = middle;
  }
  const seen = new Set();
  const added = [];
  for (let i = low; i < rows.length && rows[i].top < to; ++i) {
    seen.add(rows[i]);
    if (drawn.has(rows[i])) continue;
    const node = draw(rows[i]);
    drawn.set(rows[i], node);
    added.push(node);
  }
  for (const [row, node] of drawn) {
    if (seen.has(row)) continue;
    node.remove();
    drawn.delete(row);
  }
  at("rows").append(...added);
}

function refresh() {
  const terms = search.termsOf(at("search").value);
  const isSearch = at("search").value.trim() !== "";
  const before = found[current];
  found = persons.filter(person => place.holds(person) && terms.every(term => search.occurs(term, person)));
  if (isSearch && terms.length === 0) found = [];
  current = found.indexOf(before);
  for (const node of drawn.values()) node.remove();
  drawn.clear();
  at("rows").textContent = "";
  layOut();
  at("list").scrollTop = 0;
  const where = place === everybody ? "" : " in " + (place.name || "(no name)");
  at("count").textContent = counted(found.length, "person") + where;
  if (found.length === 0) {
    const nobody = isSearch ? "Nobody matches “" + at("search").value.trim() + "”" + where + "."
                            : "Nobody is here yet.";
    at("rows").style.height = "auto";
    at("rows").append(make("p", "none", nobody));
  }
  drawRows();
  mark();
}

function mark() {
  for (const [row, node] of drawn) {
    if (row.person) node.setAttribute("aria-selected", String(row.index === current));
  }
  const node = document.getElementById("row" + current);
  if (node) at("list").setAttribute("aria-activedescendant", node.id);
  else at("list").removeAttribute("aria-activedescendant");
}

function choose(index) {
  if (found.length === 0) return;
  current = Math.max(0, Math.min(index, found.length - 1));
  const list = at("list");
  const row = rows.find(each => each.index === current);
  const above = current === 0 ? 0 : row.top - kLetter;
  if (above < list.scrollTop) list.scrollTop = above;
  const below = row.top + row.height - list.clientHeight;
  if (below > list.scrollTop) list.scrollTop = below;
  drawRows();
  mark();
  showPerson(found[current]);
}

// ---- One person ----

const isNarrow = () => matchMedia("(max-width: 719px)").matches;

// "1988-12-03" and "--12-03" as the reader writes days; other dates as they are.
function shownDate(text) {
  const parts = /^(?:(\d{4})|-)-(\d\d)-(\d\d)$/.exec(text);
  if (!parts) return text;
  const day = new Date(Date.UTC(2000, parts[2] - 1, parts[3]));
  if (parts[1]) day.setUTCFullYear(parts[1], parts[2] - 1, parts[3]);
  const form = {day: "numeric", month: "long", timeZone: "UTC"};
  if (parts[1]) form.year = "numeric";
  return day.toLocaleDateString(undefined, form);
}

const textOf = value => value.date === undefined ? value.text : shownDate(value.date);

function linkTo(value, text, name) {
  if (!value.link || !/^(mailto:|tel:|https?:\/\/)/i.test(value.link)) return makeText("span", name, text);
  const link = makeText("a", name, text);
  link.href = value.link;
  link.rel = "noopener noreferrer";
  if (/^http/i.test(value.link)) link.target = "_blank";
  return link;
}

function fieldOf(field) {
  const row = make("div", "field");
  row.append(make("dt", "", field.name));
  for (const value of field.values) {
    const item = make("dd");
    if (value.label) item.append(makeText("span", "label-of", value.label));
    item.append(linkTo(value, textOf(value), "value"));
    if (value.main && field.values.length > 1) {
      const star = make("span", "star", " ★");
      star.title = "The main one";
      item.append(star);
    }
    if (value.map) item.append(linkTo({link: value.map}, "Map", "map"));
    row.append(item);
  }
  return row;
}

function chip(text, image) {
  const node = make("span", "chip");
  if (image) node.append(artwork(image));
  node.append(makeText("span", "", text || "(no name)"));
  return node;
}

function showPerson(person) {
  const shown = at("person");
  shown.textContent = "";
  shown.scrollTop = 0;
  if (!person) {
    shown.append(make("p", "none", persons.length ? "Choose somebody from the list." : "No contacts yet."));
    return;
  }
  const back = make("button", "back", "‹ Contacts");
  back.type = "button";
  back.addEventListener("click", () => history.back());
  const head = make("div", "head");
  const words = make("div");
  words.append(makeText("h2", "", nameOf(person)));
  if (person.latin) words.append(make("p", "", person.latin));
  if (person.second && person.isCompany) words.append(makeText("p", "", person.second));
  head.append(faceOf(person, " large"), words);
  const chips = make("div", "chips");
  const home = book.books[person.book];
  if (home) chips.append(chip(home.name, home.picture ? home : null));
  for (const group of person.groups) chips.append(chip(group.name));
  for (const tag of person.tags ?? []) chips.append(chip("#" + tag));
  const fields = make("dl", "fields");
  for (const field of person.fields) fields.append(fieldOf(field));
  shown.append(back, head, chips, fields);
}

function open() {
  if (current < 0 || !isNarrow()) return;
  if (!document.body.classList.contains("reading")) history.pushState({reading: true}, "");
  document.body.classList.add("reading");
  at("person").focus();
}

window.addEventListener("popstate", () => {
  document.body.classList.remove("reading");
  at("list").focus();
});

// ---- Birthdays of a month ----

const now = new Date();
let month = new Date(now.getFullYear(), now.getMonth(), 1);

function fillDays() {
  const sameYear = month.getFullYear() === now.getFullYear();
  at("month").textContent = month.toLocaleDateString(
      undefined, sameYear ? {month: "long"} : {month: "long", year: "numeric"});
  const days = at("days");
  days.textContent = "";
  const born = [];
  const lastDay = new Date(month.getFullYear(), month.getMonth() + 1, 0).getDate();
  for (const person of persons) {
    const parts = /^(?:(\d{4})|-)-(\d\d)-(\d\d)/.exec(person.birthday ?? "");
    if (!parts || parts[2] - 1 !== month.getMonth()) continue;
    // Who was born on 29 February has the birthday on the 28th of other years.
    born.push([Math.min(Number(parts[3]), lastDay), parts[1], person]);
  }
  born.sort((one, other) => one[0] - other[0]);
  for (const [day, year, person] of born) {
    const years = year ? month.getFullYear() - year : 0;
    const isToday = sameYear && month.getMonth() === now.getMonth() && day === now.getDate();
    const button = make("button", isToday ? "today" : "");
    button.type = "button";
    const words = make("span", "words");
    words.append(makeText("span", "name", nameOf(person)));
    const note = [isToday ? "today" : "", years > 0 ? counted(years, "year") : ""].filter(Boolean).join(", ");
    if (note) words.append(make("span", "second", note));
    button.append(make("span", "day", String(day)), words);
    button.addEventListener("click", () => goTo(person));
    const item = make("li");
    item.append(button);
    days.append(item);
  }
  if (born.length === 0) days.append(make("p", "quiet", "No birthdays"));
}

function goTo(person) {
  showPlaces(false);
  if (!found.includes(person)) {
    at("search").value = "";
    at("tree").querySelector("button").click();
  }
  choose(found.indexOf(person));
  open();
}

function turn(months) {
  month = new Date(month.getFullYear(), month.getMonth() + months, 1);
  fillDays();
}

// ---- Printing: those of the list, with all that is known of them. ----

function fillSheet() {
  const sheet = at("sheet");
  sheet.textContent = "";
  for (const person of found) {
    const entry = make("div", "entry");
    entry.append(makeText("h3", "", nameOf(person)));
    for (const field of person.fields) {
      const line = make("p");
      line.append(make("span", "what", field.name + ": "));
      field.values.forEach((value, index) => {
        if (index > 0) line.append("; ");
        if (value.label) line.append(make("span", "what", value.label + " "));
        line.append(make("bdi", "", textOf(value)));
      });
      entry.append(line);
    }
    sheet.append(entry);
  }
}

window.addEventListener("beforeprint", fillSheet);
window.addEventListener("afterprint", () => { at("sheet").textContent = ""; });

// ---- Keys ----

function step(event) {
  const page = Math.max(1, Math.floor(at("list").clientHeight / kRow) - 1);
  const isTyping = event.target === at("search");
  switch (event.key) {
    case "ArrowDown": return 1;
    case "ArrowUp": return -1;
    case "PageDown": return page;
    case "PageUp": return -page;
    case "j": return isTyping ? 0 : 1;
    case "k": return isTyping ? 0 : -1;
    case "Home": return isTyping ? 0 : -found.length;
    case "End": return isTyping ? 0 : found.length;
    default: return 0;
  }
}

function escape() {
  if (document.body.classList.contains("reading")) return history.back();
  if (at("places").classList.contains("open")) return showPlaces(false);
  if (at("search").value) {
    at("search").value = "";
    refresh();
    if (current >= 0) choose(current);
  }
  at("list").focus();
}

document.addEventListener("keydown", event => {
  if (event.ctrlKey || event.metaKey || event.altKey || event.isComposing) return;
  const isTyping = event.target === at("search");
  const isReading = at("person").contains(event.target);
  if (event.key === "/" && !isTyping) {
    if (document.body.classList.contains("reading")) history.back();
    at("search").focus();
    at("search").select();
    return event.preventDefault();
  }
  if (event.key === "Escape") {
    event.preventDefault();
    return escape();
  }
  if (event.key === "Enter" && (isTyping || event.target === at("list"))) {
    choose(Math.max(current, 0));
    open();
    if (!isNarrow() && current >= 0) at("person").focus();
    return event.preventDefault();
  }
  const steps = step(event);
  const scrolls = isReading && event.key !== "j" && event.key !== "k";
  if (steps === 0 || scrolls) return;
  choose(current < 0 ? (event.key === "End" ? found.length : 0) : current + steps);
  event.preventDefault();
});

at("search").addEventListener("input", refresh);
at("menu").addEventListener("click", () => showPlaces(!at("places").classList.contains("open")));
at("earlier").addEventListener("click", () => turn(-1));
at("later").addEventListener("click", () => turn(1));
let isDrawing = false;
at("list").addEventListener("scroll", () => {
  if (isDrawing) return;
  isDrawing = true;
  requestAnimationFrame(() => { isDrawing = false; drawRows(); });
});
window.addEventListener("resize", drawRows);

fillTree();
fillDays();
refresh();
showPerson(null);
})();
