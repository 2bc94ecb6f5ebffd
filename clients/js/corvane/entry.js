/** One entry of a directory, or of the network. */
export class Entry {
  constructor(kind, name, attributes) {
    this.kind = kind;
    this.name = name;
    this.attributes = attributes;
  }

  isDirectory() {
    return this.kind === "directory";
  }

  isHidden() {
    return this.attributes.includes("h");
  }

  isReadOnly() {
    return this.attributes.includes("r");
  }
}
