package corvane;

/** A reply of the server, taken apart. **/
class Reply {
  public final action:String;
  public final ok:Bool;

  /** 0 when the reply has none. **/
  public final errno:Int;

  /** Empty when the reply has none. **/
  public final hint:String;

  public final details:Array<Detail>;

  public function new(action:String, ok:Bool, errno:Int, hint:String, details:Array<Detail>) {
    this.action = action;
    this.ok = ok;
    this.errno = errno;
    this.hint = hint;
    this.details = details;
  }

  /** The value of the first detail with this id, or null. **/
  public function find(id:String):Null<String> {
    for (detail in details)
      if (detail.id == id)
        return detail.value;
    return null;
  }
}
