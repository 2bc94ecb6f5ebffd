// A transport and a clock under the control of a test, and replies as the server writes them.

import {CorvaneClient} from "../../../clients/js/corvane/index.js";

/** Notes what the client does with its connections; `last` is the newest one. */
export class StandIn {
  openings = 0;
  last = null;
  sent = [];

  open(events) {
    this.openings++;
    this.last = {events, isOpen: false, closed: false};
    const channel = this.last;
    return {
      send: (bytes) => this.sent.push(new TextDecoder().decode(bytes)),
      close() {
        channel.closed = true;
      },
    };
  }

  accept() {
    this.last.events.opened();
  }

  receive(...replies) {
    this.last.events.received(new TextEncoder().encode(replies.map((reply) => reply + "\0").join("")));
  }

  drop() {
    this.last.events.lost();
  }
}

/** Takes the place of the timers until it is disposed of. */
export class Clock {
  #real = {setTimeout: globalThis.setTimeout, clearTimeout: globalThis.clearTimeout};
  #rings = new Map();
  #next = 1;

  constructor() {
    globalThis.setTimeout = (ring, milliseconds) => {
      this.#rings.set(this.#next, {ring, milliseconds});
      return this.#next++;
    };
    globalThis.clearTimeout = (timer) => this.#rings.delete(timer);
  }

  /** The milliseconds of the timers that are running. */
  get running() {
    return [...this.#rings.values()].map(({milliseconds}) => milliseconds);
  }

  elapse() {
    const rings = [...this.#rings.values()];
    this.#rings.clear();
    for (const {ring} of rings) ring();
  }

  restore() {
    Object.assign(globalThis, this.#real);
  }
}

export function envelope(action, result, attributes = "", details = "") {
  return `<CorvaneMsg><Header id="info" Type="RESULT" Action="${action}" Result="${result}"${attributes}>${details}</Header></CorvaneMsg>`;
}

export function valueReply(action, value) {
  return envelope(action, "SUCCESS", "", `<Detail id="value" extra="" Value="${value}" />`);
}

/** A client whose first request has been answered, and its transport. */
export async function connected() {
  const transport = new StandIn();
  const client = new CorvaneClient(transport);
  const name = client.userName();
  transport.accept();
  transport.receive(valueReply("userName", "ada"));
  await name;
  transport.sent.length = 0;
  return {client, transport};
}

/** What a promise has come to: {value} or {failure}. */
export function outcome(promise) {
  return promise.then((value) => ({value}), (failure) => ({failure}));
}
