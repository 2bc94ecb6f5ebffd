/** Puts the pieces of a connection together to messages, each ended by a byte 0, and gives their text. */
export class Messages {
  #decoder = new TextDecoder("utf-8", {ignoreBOM: true});
  #begun = "";

  /** The messages that `bytes` (a Uint8Array) completes; a letter may be split between two pieces. */
  *add(bytes) {
    let begin = 0;
    for (let end = bytes.indexOf(0); end >= 0; end = bytes.indexOf(0, begin)) {
      const text = this.#begun + this.#decoder.decode(bytes.subarray(begin, end));
      this.#begun = "";
      begin = end + 1;
      yield text;
    }
    this.#begun += this.#decoder.decode(bytes.subarray(begin), {stream: true});
  }
}
