// Finds persons as `oxcontacts find` does, in the texts that the program has folded: what is typed
// is all that this folds. The rules are told in docs/finding.md.
"use strict";
const search = (() => {
const kPlain = {"æ": "ae", "ð": "d", "ø": "o", "þ": "th", "đ": "d", "ħ": "h", "ı": "i", "ł": "l",
                "ŋ": "n", "œ": "oe", "ŧ": "t", "ß": "ss"};

function folded(text) {
  const bare = t => t.normalize("NFD").replace(/\p{M}|\p{Default_Ignorable_Code_Point}/gu, "");
  // Subscribed iotas are letters when they are folded, and Cherokee folds to capitals.
  const spelt = text.normalize("NFD").replace(/\u0345/g, "ι");
  return bare(bare(spelt.toLowerCase()).normalize("NFKC").toLowerCase())
      .replace(/[\u13f8-\u13fd\uab70-\uabbf]/g, letter => letter.toUpperCase())
      .replace(/[æðøþđħıłŋœŧß]/g, letter => kPlain[letter]).replace(/ς/g, "σ").normalize("NFC");
}

function decimalDigits(text) {
  return text.replace(/\P{Nd}/gu, "").replace(/\p{Nd}/gu, digit => {
    const code = digit.codePointAt(0);
    let value = 0;
    while (value < 9 && /\p{Nd}/u.test(String.fromCodePoint(code - value - 1))) ++value;
    return String(value);
  });
}

// The digits of a number as the texts hold them: with a plus before the prefix of a country.
function searchedDigits(number) {
  const hasPlus = /^[ \t(]*\+/.test(number);
  const zero = number.indexOf("(0)");
  const digits = decimalDigits(zero > 0 ? number.slice(0, zero) + number.slice(zero + 3) : number);
  if (hasPlus && digits) return "+" + digits;
  if (digits.startsWith("00")) return "+" + digits.slice(2);
  return zero < 0 ? digits : decimalDigits(number);
}

// How many digits the prefix of a country has (ITU-T E.164).
const kTwoDigits = ["", "", "07", "0123469", "013456789", "12345678", "0123456", "", "1246", "0123458"];
function countryDigits(international) {
  if (!international) return 0;
  if (international[0] === "1" || international[0] === "7") return 1;
  if (international.length < 2) return international.length;
  const isShort = kTwoDigits[international[0]].includes(international[1]);
  return Math.min(isShort ? 2 : 3, international.length);
}
const countryOf = number => number.slice(1, 1 + countryDigits(number.slice(1)));
function coreOf(number) {
  const national = number.startsWith("+") ? number.slice(1 + countryDigits(number.slice(1))) : number;
  return national.replace(/^0+/, "");
}

function isOfNumber(sought, stored) {
  const bothTellCountry = sought.startsWith("+") && stored.startsWith("+");
  if (bothTellCountry && countryOf(sought) !== countryOf(stored)) return false;
  return stored.includes(coreOf(sought));
}

// The letters by which the lines of a text begin, by the words that name their fields.
const kKnown = "ABCDEFGH";
const kPhone = "H";
const kFields = {name: "ABC", nickname: "B", phonetic: "C", company: "D", email: "E", mail: "E",
                 town: "F", city: "F", note: "G", phone: "H", department: "I", job: "J", jobtitle: "J",
                 address: "KFLMN", street: "K", state: "L", zip: "M", country: "N", url: "O", urls: "O",
                 chat: "P", instantmessage: "P", profile: "Q", socialprofile: "Q", related: "R",
                 relatednames: "R", date: "S", birthday: "S", other: "T"};

function wordsOf(typed) {
  const words = [];
  for (const found of typed.matchAll(/(?:"[^"]*(?:"|$)|[^\s"])+/gu)) {
    const text = found[0].replace(/"/g, "");
    if (text) words.push({text, isQuoted: found[0].includes('"')});
  }
  return words.slice(0, 64);
}

const isOfDigits = text => /^[\p{Nd}\p{White_Space}\p{Pd}().\/+\u2212]+$/u.test(text);

// Each word, or run of digits, as what is to occur: its number, or all of its texts.
function termsOf(typed) {
  const terms = [];
  const add = (texts, number, fields) => {
    texts = texts.filter(text => text);
    if (coreOf(number).length < 3) number = "";
    if (texts.length || number) terms.push({texts, number, fields});
  };
  const words = wordsOf(typed);
  for (let i = 0; i < words.length;) {
    const from = i;
    while (i < words.length && !words[i].isQuoted && isOfDigits(words[i].text)) ++i;
    if (i > from) {
      const run = words.slice(from, i).map(word => word.text);
      add(run.filter(decimalDigits).map(folded), searchedDigits(run.join(" ")), kKnown);
      continue;
    }
    const word = words[i++].text;
    const colon = word.indexOf(":");
    const name = colon < 0 ? "" : folded(word.slice(0, colon));
    if (!Object.hasOwn(kFields, name)) {
      add([folded(word)], "", kKnown);
    } else {
      const text = word.slice(colon + 1);
      add([folded(text)], isOfDigits(text) ? searchedDigits(text) : "", kFields[name]);
    }
  }
  return terms;
}

function linesOf(person) {
  person.lines ??= person.find.split("\n");
  return person.lines;
}

function occurs(term, person) {
  const isIn = (fields, test) => linesOf(person).some(
      line => line && fields.includes(line[0]) && test(line.slice(1)));
  if (term.number && term.fields.includes(kPhone) &&
      isIn(kPhone, line => isOfNumber(term.number, line))) return true;
  return term.texts.length > 0 && term.texts.every(
      text => person.find.includes(text) && isIn(term.fields, line => line.includes(text)));
}

return {termsOf, occurs};
})();
