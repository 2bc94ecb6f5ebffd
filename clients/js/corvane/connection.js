import {Failure} from "./failure.js";
import {Messages} from "./messages.js";
import {parseReply} from "./reply_reader.js";

const LONGEST_TIMEOUT = 2 ** 31 - 1; // milliseconds; a timer with more rings at once

/**
 * Sends requests one at a time, in the order in which they came, and matches replies to them.
 *
 * It connects when there is something to send and connects again after the connection was lost. A
 * request is never sent twice: the server may have carried it out before the connection ended.
 */
export class Connection {
  #transport;
  #timeout = 10000;
  #timer;
  #waiting = [];

  /** The request under way; it is not in `#waiting` any more. */
  #current = null;

  /** Whether `#current` has left; before that the connection is being made. */
  #sent = false;

  /** What the transport has opened, and whether it can be used already. */
  #channel = null;
  #isOpen = false;

  constructor(transport) {
    this.#transport = transport;
  }

  set timeout(milliseconds) {
    this.#timeout = Math.min(milliseconds, LONGEST_TIMEOUT);
  }

  /**
   * `request` is {action, text, endsServer}: the command's name; all of it but the terminator;
   * whether its success is the end of the connection. Gives the reply; null for the end of a server.
   */
  send(request) {
    return new Promise((resolve, reject) => {
      this.#waiting.push({...request, resolve, reject});
      this.#proceed();
    });
  }

  /** Ends the connection; what has not been answered fails as disconnected. */
  close() {
    this.#disconnect();
    clearTimeout(this.#timer);
    const unanswered = this.#waiting.splice(0);
    if (this.#current !== null) unanswered.unshift(this.#current);
    this.#current = null;
    for (const {action, reject} of unanswered) reject(new Failure(Failure.DISCONNECTED, action));
  }

  #proceed() {
    if (this.#current !== null || this.#waiting.length === 0) return;
    this.#current = this.#waiting.shift();
    this.#sent = false;
    this.#timer = setTimeout(() => this.#onTimeout(), this.#timeout);
    if (this.#isOpen) this.#transmit();
    else this.#connect();
  }

  /** Each opening has handlers of its own: late events of an old one must not count for the new one. */
  #connect() {
    const messages = new Messages();
    const ifCurrent = (handle) => (data) => {
      if (channel === this.#channel) handle(data);
    };
    const channel = this.#transport.open({
      opened: ifCurrent(() => this.#onOpened()),
      received: ifCurrent((bytes) => this.#onBytes(channel, messages.add(bytes))),
      lost: ifCurrent(() => this.#onLost()),
    });
    this.#channel = channel;
  }

  #disconnect() {
    const channel = this.#channel;
    this.#channel = null;
    this.#isOpen = false;
    channel?.close();
  }

  #onOpened() {
    this.#isOpen = true;
    if (this.#current !== null) this.#transmit();
  }

  #transmit() {
    this.#sent = true;
    this.#channel.send(new TextEncoder().encode(this.#current.text + "\0"));
  }

  #onBytes(channel, texts) {
    for (const text of texts) {
      this.#onReceived(text);
      if (channel !== this.#channel) return; // what is left came with a reply that ended this connection
    }
  }

  #onReceived(text) {
    const reply = parseReply(text);
    if (reply !== null && reply.action === this.#current?.action) {
      this.#finish(({resolve}) => resolve(reply));
      return;
    }
    // Out of step: any later reply might be taken for the answer to another request.
    this.#disconnect();
    if (this.#current !== null) this.#fail(Failure.MALFORMED);
  }

  #onLost() {
    this.#disconnect();
    if (this.#current === null) return;
    if (this.#current.endsServer && this.#sent) this.#finish(({resolve}) => resolve(null));
    else this.#fail(Failure.DISCONNECTED);
  }

  #onTimeout() {
    // A reply that comes after all must not be taken for the answer to the next request.
    this.#disconnect();
    this.#fail(Failure.TIMED_OUT);
  }

  #fail(kind) {
    this.#finish(({action, reject}) => reject(new Failure(kind, action)));
  }

  #finish(settle) {
    clearTimeout(this.#timer);
    settle(this.#current);
    this.#current = null;
    this.#proceed();
  }
}
