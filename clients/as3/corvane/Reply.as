package corvane {
  /** A reply of the server, taken apart. */
  public class Reply {
    public var action:String;
    public var ok:Boolean;

    /** 0 when the reply has none. */
    public var errno:int = 0;

    /** Empty when the reply has none. */
    public var hint:String = "";

    /** Of Detail. */
    public var details:Array = [];

    /** The value of the first detail with this id, or null. */
    public function find(id:String):String {
      for each (var detail:Detail in details) {
        if (detail.id == id)
          return detail.value;
      }
      return null;
    }
  }
}
