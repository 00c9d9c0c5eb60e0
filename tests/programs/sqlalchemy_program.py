"""Objects in a database in memory; rows are made of what `ling` holds, and a rollback loses them."""

from sqlalchemy import ForeignKey, create_engine, func, select
from sqlalchemy.orm import DeclarativeBase, Mapped, Session, mapped_column, relationship

import ling


class Base(DeclarativeBase):
    pass


class Item(Base):
    __tablename__ = "items"
    id: Mapped[int] = mapped_column(primary_key=True)
    name: Mapped[str]
    shelf_id: Mapped[int] = mapped_column(ForeignKey("shelves.id"))


class Shelf(Base):
    __tablename__ = "shelves"
    id: Mapped[int] = mapped_column(primary_key=True)
    items: Mapped[list[Item]] = relationship()


engine = create_engine("sqlite://")
Base.metadata.create_all(engine)
names = ling.List(["pen", "ink", "paper"])
with Session(engine) as session:
    session.add(Shelf(items=[Item(name=name) for name in names]))
    session.commit()
    session.add(Item(name="lost", shelf_id=1))
    session.rollback()
    assert session.scalar(select(func.count(Item.id))) == len(names)
    shelf = session.scalars(select(Shelf)).one()
    kept = ling.List([shelf])
    assert kept[0] is shelf
    print("sqlalchemy", sorted(item.name for item in shelf.items))
