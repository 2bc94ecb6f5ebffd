package corvane {
  /** One entry of a directory, or of the network. */
  public class Entry {
    /** "file", "directory", "share", "server" or "domain". */
    public var kind:String;

    /** Directories end with "/". */
    public var name:String;

    /** Letters out of "d" directory, "s" system, "h" hidden, "r" read-only. */
    public var attributes:String;

    public function Entry(kind:String, name:String, attributes:String) {
      this.kind = kind;
      this.name = name;
      this.attributes = attributes;
    }

    public function isDirectory():Boolean {
      return kind == "directory";
    }

    public function isHidden():Boolean {
      return attributes.indexOf("h") >= 0;
    }

    public function isReadOnly():Boolean {
      return attributes.indexOf("r") >= 0;
    }
  }
}
