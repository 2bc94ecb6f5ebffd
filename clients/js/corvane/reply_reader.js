// Reads the server's reply text, which has one fixed form.
//
// This is not an XML parser, and must not become one: the server writes attribute values without
// escaping them, so a file called `a&b "c".txt` makes a reply that no XML parser accepts, and a file
// called `a&amp;b` would be read under another name. Only element text is escaped.

const BEGIN = '<CorvaneMsg><Header id="info" Type="RESULT" Action="';
const DETAIL = '<Detail id="';
const END = "</Header></CorvaneMsg>";
const ENTITIES = {"&amp;": "&", "&lt;": "<", "&gt;": ">", "&quot;": '"', "&apos;": "'"};

class UnexpectedText extends Error {}

/**
 * Gives {action, ok, errno, hint, details}, each detail as {id, extra, date, size, value}: texts,
 * which are empty where the reply has none, but for `errno`, which is then 0. Null when `text` is not
 * a reply of the server.
 */
export function parseReply(text) {
  try {
    return new ReplyReader(text).reply();
  } catch (error) {
    if (error instanceof UnexpectedText) return null;
    throw error;
  }
}

class ReplyReader {
  #text;
  #at = 0;

  constructor(text) {
    this.#text = text;
  }

  reply() {
    this.#expect(BEGIN);
    const action = this.#upTo('" Result="');
    const ok = this.#accept('SUCCESS"');
    if (!ok) this.#expect('FAILED"');
    const errno = this.#accept(' errno="') ? number(this.#upTo('"')) : 0;
    let hint = "";
    if (this.#accept(' hint="')) hint = this.#upToElement('">');
    else this.#expect(">");
    const details = [];
    while (this.#accept(DETAIL)) details.push(this.#detail());
    this.#expect(END);
    if (this.#at !== this.#text.length) throw new UnexpectedText();
    return {action, ok, errno, hint, details};
  }

  #detail() {
    const id = this.#upTo('" extra="');
    const extra = this.#upTo('"');
    const date = this.#accept(' date="') ? this.#upTo('"') : "";
    const size = this.#accept(' size="') ? this.#upTo('"') : "";
    if (this.#accept(">")) return {id, extra, date, size, value: unescape(this.#upTo("</Detail>"))};
    this.#expect(' Value="');
    return {id, extra, date, size, value: this.#upToElement('" />')};
  }

  #accept(literal) {
    if (!this.#text.startsWith(literal, this.#at)) return false;
    this.#at += literal.length;
    return true;
  }

  #expect(literal) {
    if (!this.#accept(literal)) throw new UnexpectedText();
  }

  /** The text before the next `mark`; goes on behind the mark. */
  #upTo(mark) {
    return this.#take(this.#text.indexOf(mark, this.#at), mark);
  }

  /** As upTo, but the mark counts only where an element follows: an unescaped value may hold it. */
  #upToElement(mark) {
    let end = this.#text.indexOf(mark, this.#at);
    while (end >= 0 && !this.#elementAt(end + mark.length)) end = this.#text.indexOf(mark, end + 1);
    return this.#take(end, mark);
  }

  #elementAt(position) {
    return this.#text.startsWith(DETAIL, position) || this.#text.startsWith(END, position);
  }

  #take(end, mark) {
    if (end < 0) throw new UnexpectedText();
    const taken = this.#text.slice(this.#at, end);
    this.#at = end + mark.length;
    return taken;
  }
}

function number(digits) {
  if (!/^\d+$/.test(digits)) throw new UnexpectedText();
  return Number(digits);
}

/** In one pass: `&amp;lt;` stands for `&lt;`. */
function unescape(escaped) {
  return escaped.replace(/&(?:amp|lt|gt|quot|apos);/g, (entity) => ENTITIES[entity]);
}
