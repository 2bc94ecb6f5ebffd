package corvane;

/** One entry of a directory, or of the network. **/
class Entry {
  /** "file", "directory", "share", "server" or "domain". **/
  public final kind:String;

  /** Directories end with "/". **/
  public final name:String;

  /** Letters out of "d" directory, "s" system, "h" hidden, "r" read-only. **/
  public final attributes:String;

  public function new(kind:String, name:String, attributes:String) {
    this.kind = kind;
    this.name = name;
    this.attributes = attributes;
  }

  public function isDirectory():Bool {
    return kind == "directory";
  }

  public function isHidden():Bool {
    return attributes.indexOf("h") >= 0;
  }

  public function isReadOnly():Bool {
    return attributes.indexOf("r") >= 0;
  }
}
