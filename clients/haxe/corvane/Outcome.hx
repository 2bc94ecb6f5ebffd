package corvane;

/**
  What a command came to: either a value or a failure, never both.
  Nothing is thrown: test `ok` first.
**/
class Outcome<T> {
  public final ok:Bool;

  /** The command's result; null when `ok` is false. **/
  public final value:Null<T>;

  /** Why there is no result; null when `ok` is true. **/
  public final failure:Null<Failure>;

  function new(ok:Bool, value:Null<T>, failure:Null<Failure>) {
    this.ok = ok;
    this.value = value;
    this.failure = failure;
  }

  public static function success<T>(value:T):Outcome<T> {
    return new Outcome(true, value, null);
  }

  public static function failed<T>(failure:Failure):Outcome<T> {
    return new Outcome(false, null, failure);
  }
}
