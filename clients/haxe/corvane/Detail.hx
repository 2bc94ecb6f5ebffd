package corvane;

/** One `Detail` element of a reply, every field as text. Fields that are not there are empty. **/
class Detail {
  public final id:String;
  public final extra:String;
  public final date:String;
  public final size:String;
  public final value:String;

  public function new(id:String, extra:String, date:String, size:String, value:String) {
    this.id = id;
    this.extra = extra;
    this.date = date;
    this.size = size;
    this.value = value;
  }
}
