package corvane {
  /** One "Detail" element of a reply, every field as text. Fields that are not there are empty. */
  public class Detail {
    public var id:String;
    public var extra:String;
    public var date:String = "";
    public var size:String = "";
    public var value:String;
  }
}
